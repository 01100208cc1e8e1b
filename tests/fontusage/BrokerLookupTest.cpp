#include <fontusage/detail/BrokerLookup.h>

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

using orvcapsule::detail::BrokerLocation;
using orvcore::UTF16String;
using orvtarsksupport::RegistryText;
using Variables = std::map<std::string, UTF16String>;
using Files = std::set<UTF16String>;

const UTF16String kEnd = u"\\Ambrel\\Ambrel Desktop Common\\Pipebay\\AmbrelIPCBroker.exe";
const UTF16String kFallback = u"C:\\Program Files\\Common Files" + kEnd;
const UTF16String kRead = u"D:\\x\\AmbrelIPCBroker.exe";

RegistryText Registered(const UTF16String& path)
{
    return {RegistryText::Outcome::Text, path};
}

// A machine that counts the questions it is asked.
struct FakeMachine {
    Variables variables;
    Files files;
    RegistryText registry;
    int asked = 0;

    BrokerLocation Find()
    {
        return orvcapsule::detail::FindBroker({
            [this](const std::string& name) {
                ++asked;
                const auto at = variables.find(name);
                return at != variables.end() ? std::optional(at->second) : std::nullopt;
            },
            [this](const UTF16String& path) { return ++asked, files.contains(path); },
            [this](const UTF16String& key, const UTF16String& value) {
                EXPECT_TRUE(key == u"SOFTWARE\\Ambrel\\Tarsk\\5.0" && value == u"AmbrelIPCBroker");
                return ++asked, registry;
            },
        });
    }
};

TEST(BrokerLookupTest, PlacesAreAskedInOrder)
{
    const Variables both = {{"CommonProgramFiles(x86)", u"A:"}, {"CommonProgramFiles", u"B:"}};
    const Variables first = {{"CommonProgramFiles(x86)", u"A:"}};
    const Variables empty = {{"CommonProgramFiles(x86)", u""}};
    const Files all = {u"A:" + kEnd, u"B:" + kEnd, kFallback, kRead};
    const RegistryText good = Registered(kRead);
    const RegistryText missing;
    RegistryText unusable;
    unusable.outcome = RegistryText::Outcome::Unusable;
    const struct {
        FakeMachine machine;
        int status;
        UTF16String path;
        int asked; // before the answer was there
    } table[] = {
        {{both, all, good}, 0, u"A:" + kEnd, 2},
        {{both, {u"B:" + kEnd, kRead}, good}, 0, u"B:" + kEnd, 4},
        {{{}, all, good}, 0, kFallback, 2},
        {{first, {kFallback, kRead}, good}, 0, kFallback, 4},
        {{empty, {kEnd, kFallback}, good}, 0, kEnd, 2}, // set, if to nothing
        {{both, {kRead}, good}, 0, kRead, 6},
        {{both, {}, good}, 7, u"", 6},
        {{both, {kRead}, missing}, 7, u"", 5},
        {{both, {kRead}, unusable}, 6, u"", 5},
    };
    for (auto [machine, status, path, asked] : table) {
        const BrokerLocation found = machine.Find();
        EXPECT_EQ(static_cast<int>(found.status), status);
        EXPECT_EQ(found.path, path);
        EXPECT_EQ(machine.asked, asked);
    }
}

TEST(BrokerLookupTest, OnlyTheBrokersOwnNameIsAccepted)
{
    const std::pair<const char16_t*, int> table[] = {
        {u"D:/a\\b/AmbrelIPCBroker.exe", 0},
        {u"/AmbrelIPCBroker.exe", 0},
        {u"D:\\ambrelipcbroker.exe", 7},
        {u"D:\\AmbrelIPCBroker.ex", 7},
        {u"D:\\AmbrelIPCBroker.exe2", 7},
        {u"D:\\xAmbrelIPCBroker.exe", 7},
        {u"AmbrelIPCBroker.exe", 7},
        {u"D:AmbrelIPCBroker.exe", 7},
        {u"D:\\AmbrelIPCBroker.exe\\", 7},
        {u"\\AmbrelIPCBroker.exe/x", 7},
        {u"", 7},
    };
    for (const auto& [path, status] : table) {
        FakeMachine machine{{}, {path}, Registered(path)};
        const BrokerLocation found = machine.Find();
        EXPECT_EQ(static_cast<int>(found.status), status) << testing::PrintToString(path);
        EXPECT_EQ(found.path, status == 0 ? path : u"");
    }
}

} // namespace
