// The real environment, file system and registry.
#include "tests/support/TempFolder.h"

#include <fontusage/detail/BrokerLookup.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <windows.h>

namespace {

using orvcapsule::detail::BrokerLocation;
using orvcapsule::detail::FindBroker;
using Status = BrokerLocation::Status;

constexpr const wchar_t* kKey = L"SOFTWARE\\Ambrel\\Tarsk\\5.0";

class BrokerLookupWindowsTest : public testing::Test {
protected:
    BrokerLookupWindowsTest()
    {
        SetVariables((folder_ / "x86").wstring(), (folder_ / "plain").wstring());
    }
    ~BrokerLookupWindowsTest() override
    {
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Ambrel");
        SetVariables(x86_, plain_);
    }

    static std::wstring Variable(const wchar_t* name)
    {
        const wchar_t* value = _wgetenv(name);
        return value != nullptr ? value : L"";
    }
    static void SetVariables(const std::wstring& x86, const std::wstring& plain)
    {
        _wputenv((L"CommonProgramFiles(x86)=" + x86).c_str());
        _wputenv((L"CommonProgramFiles=" + plain).c_str());
    }
    static LSTATUS Register(DWORD type, const void* bytes, std::size_t size)
    {
        HKEY key = nullptr;
        LSTATUS status = ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, 0, KEY_WRITE | KEY_WOW64_64KEY,
                                           nullptr, &key, nullptr);
        if (status == ERROR_SUCCESS) {
            status = ::RegSetValueExW(key, L"AmbrelIPCBroker", 0, type, static_cast<const BYTE*>(bytes),
                                      static_cast<DWORD>(size));
            ::RegCloseKey(key);
        }
        return status;
    }
    static Status Find(std::filesystem::path& path)
    {
        const BrokerLocation found = FindBroker(orvtarsksupport::ThisMachine());
        path = orvcore::PathFromUTF16(found.path);
        return found.status;
    }

    const std::wstring x86_ = Variable(L"CommonProgramFiles(x86)");
    const std::wstring plain_ = Variable(L"CommonProgramFiles");
    const test::TempFolder folder_;
};

TEST_F(BrokerLookupWindowsTest, Variables)
{
    std::filesystem::path path;
    EXPECT_EQ(Find(path), Status::NotFound);
    for (const char* variable : {"plain", "x86"}) {
        const std::string name = std::string(variable) + "/Ambrel/Ambrel Desktop Common/Pipebay/AmbrelIPCBroker.exe";
        folder_.Write(name, "");
        EXPECT_EQ(Find(path), Status::Found);
        EXPECT_TRUE(std::filesystem::equivalent(path, folder_ / name)) << path;
    }
}

TEST_F(BrokerLookupWindowsTest, Registry)
{
    folder_.Write("字/AmbrelIPCBroker.exe", "");
    const std::wstring file = (folder_ / "字/AmbrelIPCBroker.exe").make_preferred().wstring();
    const std::size_t size = file.size() * sizeof(wchar_t);
    if (Register(REG_SZ, file.c_str(), size + sizeof(wchar_t)) == ERROR_ACCESS_DENIED) {
        GTEST_SKIP() << "only an administrator may write there";
    }
    std::filesystem::path path;
    EXPECT_EQ(Find(path), Status::Found);
    EXPECT_EQ(path.wstring(), file);
    Register(REG_SZ, file.c_str(), size); // without the end mark
    EXPECT_EQ(Find(path), Status::Found);
    for (const auto& [type, bytes] : {std::pair<DWORD, std::size_t>{REG_BINARY, size}, {REG_SZ, 0}, {REG_DWORD, 4}}) {
        Register(type, file.c_str(), bytes);
        EXPECT_EQ(Find(path), Status::BadRegistryValue) << type;
        EXPECT_TRUE(path.empty());
    }
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
    EXPECT_EQ(Find(path), Status::NotFound);
}

} // namespace
