#include <tools/zelt/editing/Composition.h>

#include <tools/zelt/output/Errors.h>

#include <charconv>
#include <cmath>
#include <optional>

namespace zelt {

namespace {

using Rational = boost::rational<std::int64_t>;

template <class Number>
std::optional<Number> Parse(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number > 0 ? std::optional(number)
                                                                                  : std::nullopt;
}

std::optional<kinlet::Point> ParseFrame(std::string_view text)
{
    // Limits of this command line and not of the format: they catch a slip of the finger before it is stored.
    constexpr std::int32_t kLargest = 65535;
    const std::size_t cross = std::min(text.find('x'), text.size());
    const auto width = Parse<std::int32_t>(text.substr(0, cross));
    const auto height = Parse<std::int32_t>(text.substr(std::min(cross + 1, text.size())));
    return width && height && *width <= kLargest && *height <= kLargest ? std::optional(kinlet::Point{*width, *height})
                                                                        : std::nullopt;
}

// "29.97" stands for 30000/1001, as nobody means 2997/100.
std::optional<Rational> FromDecimal(double rate)
{
    constexpr double kLargest = 1000;
    if (rate > kLargest) {
        return std::nullopt;
    }
    const double whole = std::ceil(rate);
    // Half of the last digit that people write: 23.98 stands for 24000/1001 as 23.976 does.
    if (std::abs(whole * 1000 / 1001 - rate) < 0.005 && whole != rate) {
        return Rational(static_cast<std::int64_t>(whole) * 1000, 1001);
    }
    return Rational(std::llround(rate * 1000), 1000);
}

std::optional<kinlet::FrameRate> ParseRate(std::string_view text)
{
    constexpr std::int64_t kLargest = 1'000'000;
    const std::size_t slash = text.find('/');
    if (slash == text.npos) {
        const auto rate = Parse<double>(text);
        const auto rational = rate ? FromDecimal(*rate) : std::nullopt;
        return rational && *rational > 0 ? kinlet::FrameRate::FromRational(*rational) : std::nullopt;
    }
    const auto frames = Parse<std::int64_t>(text.substr(0, slash));
    const auto seconds = Parse<std::int64_t>(text.substr(slash + 1));
    return frames && seconds && *frames <= kLargest && *seconds <= kLargest
               ? kinlet::FrameRate::FromRational(Rational(*frames, *seconds))
               : std::nullopt;
}

std::optional<kinlet::Time> ParseDuration(std::string_view text, const kinlet::FrameRate& rate)
{
    constexpr double kLongest = 7 * 86400; // seconds
    const std::size_t unit = std::min(text.find_first_not_of("0123456789."), text.size());
    const auto number = Parse<double>(text.substr(0, unit));
    const std::string_view name = text.substr(unit);
    const double second = static_cast<double>(kinlet::kTicksPerSecond);
    const double ticks = name == "s"    ? second
                         : name == "ms" ? second / 1000
                         : name == "f"  ? static_cast<double>(rate.ticksPerFrame)
                                        : 0;
    if (!number || ticks == 0 || *number * ticks > kLongest * second) {
        return std::nullopt;
    }
    return kinlet::Time{std::llround(*number * ticks), kinlet::kTicksPerSecond};
}

} // namespace

kinlet::SourceInfo MakeComposition(const std::string& frame, const std::string& rate, const std::string& duration)
{
    std::string wrong;
    const auto need = [&wrong](bool isGood, const std::string& option, const std::string& given, const char* form) {
        if (!isGood) {
            wrong += (wrong.empty() ? "" : "; ") + option +
                     (given.empty() ? " is missing" : ": \"" + given + "\" is not " + form);
        }
    };
    const auto size = ParseFrame(frame);
    const auto frameRate = ParseRate(rate);
    // Any rate will do where the given one is wrong: the result is not used, only whether the text has the form.
    const auto time = ParseDuration(duration, frameRate.value_or(kinlet::FrameRate{1}));
    need(size.has_value(), "--frame", frame, "WIDTHxHEIGHT in pixels");
    need(frameRate.has_value(), "--rate", rate, "a number of frames a second");
    need(time.has_value(), "--duration", duration, "of the form 5s, 500ms or 125f");
    if (!wrong.empty()) {
        throw UsageError(wrong);
    }
    kinlet::SourceInfo composition;
    composition.id = orvcore::Guid::Create();
    composition.initialContentState = orvcore::Guid::Create();
    composition.frameSize.size = *size;
    composition.frameRate = *frameRate;
    composition.duration = *time;
    composition.outPoint = *time;
    composition.workOutPoint = *time;
    composition.hasVideo = true;
    return composition;
}

} // namespace zelt
