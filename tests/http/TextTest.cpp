#include <tools/http/Guard.h>
#include <tools/http/Target.h>
#include <tools/http/detail/FileRange.h>

#include <gmock/gmock.h>

namespace {

using namespace orvtools::http;

TEST(HTTPTarget, IsDecodedOrRefused)
{
    struct Case {
        std::string target;
        std::string path; // empty: refused
        Fields query = {};
    };
    const Case cases[] = {
        {"/", "/"},
        {"/a/b%20c", "/a/b c"},
        {"/a/", "/a/"},
        {"/%E5%AD%97?", "/字"},
        {"/a?x=1&y=%2B%20%26+&&z&x=", "/a", {{"x", "1"}, {"y", "+ &+"}, {"z", ""}, {"x", ""}}},
        {"/a?b=c=d?e", "/a", {{"b", "c=d?e"}}},
        {"/...", "/..."},
        {"", ""},
        {"*", ""},
        {"http://host/a", ""},
        {"a", ""},
        {"//a", ""},
        {"/a//b", ""},
        {"/.", ""},
        {"/a/../b", ""},
        {"/%2e%2E/b", ""},
        {"/a%2fb", ""},
        {"/a%5Cb", ""},
        {"/a\\b", ""},
        {"/a%00", ""},
        {"/a%0A", ""},
        {"/%", ""},
        {"/%4", ""},
        {"/%zz", ""},
        {"/%C3", ""},
        {"/%ED%A0%80", ""},
        {"/a?x=%", ""},
        {"/a?%FF", ""},
    };
    for (const Case& c : cases) {
        Request request;
        EXPECT_EQ(ParseTarget(c.target, request), !c.path.empty()) << c.target;
        if (!c.path.empty()) {
            EXPECT_EQ(request.path, c.path) << c.target;
            EXPECT_EQ(request.query, c.query) << c.target;
        }
    }
    EXPECT_EQ(EncodePercent("a/ü ~%"), "a%2F%C3%BC%20~%25");
}

TEST(HTTPRange, OneRangeIsAnswered)
{
    using detail::RangeAnswer;
    const auto part = [](std::uint64_t first, std::uint64_t last) {
        return RangeAnswer{RangeAnswer::Kind::Part, {first, last}};
    };
    const RangeAnswer whole;
    const RangeAnswer none{RangeAnswer::Kind::Unsatisfiable, {}};
    const std::pair<std::string, RangeAnswer> cases[] = {
        {"bytes=0-0", part(0, 0)},
        {"bytes=2-", part(2, 9)},
        {"Bytes = 2 - 5 ", part(2, 5)},
        {"bytes=9-9999", part(9, 9)},
        {"bytes=-3", part(7, 9)},
        {"bytes=-99", part(0, 9)},
        {"bytes=10-", none},
        {"bytes=-0", none},
        {"bytes=5-4", whole},
        {"bytes=0-1,3-4", whole},
        {"lines=0-1", whole},
        {"bytes=", whole},
        {"bytes=-", whole},
        {"bytes=a-b", whole},
        {"bytes=1", whole},
        {"bytes=+1-2", whole},
        {"bytes=1-2-3", whole},
        {"", whole},
        {"bytes=0-18446744073709551616", whole},
    };
    for (const auto& [header, expected] : cases) {
        EXPECT_EQ(detail::SelectRange(header, 10), expected) << header;
    }
    EXPECT_EQ(detail::SelectRange("bytes=0-", 0), none) << "an empty file has no part";
    EXPECT_TRUE(detail::NamesTag(R"(W/"a", "b")", R"("b")") && detail::NamesTag(R"(W/"a")", R"("a")"));
    EXPECT_FALSE(detail::NamesTag(R"("ab")", R"("a")"));
}

TEST(HTTPGuard, ForeignHostsAndPagesAreKnown)
{
    struct Case {
        Fields headers;
        bool isLoopback;
        bool isSameOrigin;
    };
    const Case cases[] = {
        {{{"host", "127.0.0.1:80"}}, true, true},
        {{{"Host", "LOCALHOST"}, {"Origin", "http://localhost"}, {"Sec-Fetch-Site", "same-origin"}}, true, true},
        {{{"Host", "[::1]:80"}, {"Sec-Fetch-Site", "none"}}, true, true},
        {{{"Host", "127.0.0.1:81"}}, false, true},
        {{{"Host", "127.0.0.1.example.com:80"}}, false, true},
        {{}, false, true},
        {{{"Host", "127.0.0.1:80"}, {"Origin", "http://example.com"}}, true, false},
        {{{"Host", "127.0.0.1:80"}, {"Origin", "null"}}, true, false},
        {{{"Host", "127.0.0.1:80"}, {"Origin", "http://127.0.0.1:81"}}, true, false},
        {{{"Host", "127.0.0.1:80"}, {"Sec-Fetch-Site", "cross-site"}}, true, false},
    };
    for (const Case& c : cases) {
        Request request;
        request.headers = c.headers;
        EXPECT_EQ(IsHostLoopback(request, 80), c.isLoopback) << testing::PrintToString(c.headers);
        EXPECT_EQ(IsSameOrigin(request), c.isSameOrigin) << testing::PrintToString(c.headers);
    }
    EXPECT_TRUE(IsSecret("abc", "abc"));
    EXPECT_FALSE(IsSecret("abd", "abc") || IsSecret("", "abc") || IsSecret("abca", "abc"));
}

} // namespace
