#include <tools/stock/detail/Spoil.h>

#include <tools/http/Stream.h>
#include <tools/stock/detail/Answers.h>

#include <orvcore/files/Files.h>

#include <algorithm>
#include <memory>

namespace orvtools::stock::detail {

namespace {

constexpr std::uint64_t kLie = 10; // bytes

// The body as text.
// A file is read whole to be spoilt: its length and its half must be known.
std::string& Text(http::Response& response)
{
    if (const auto* const file = std::get_if<http::FileBody>(&response.body)) {
        std::string content = orvcore::ReadWholeFile(file->path);
        response.body = std::move(content);
    }
    return std::get<std::string>(response.body);
}

void Lie(http::Response& response, Faults::Length announced)
{
    const std::uint64_t size = Text(response).size();
    response.announcedLength = announced == Faults::Length::Longer ? size + kLie : size - std::min(size, kLie);
}

void Break(http::Response& response, Faults::SecondHalf secondHalf)
{
    std::string& text = Text(response);
    response.announcedLength = response.announcedLength.value_or(text.size());
    text.resize(text.size() / 2);
    if (secondHalf == Faults::SecondHalf::Withheld) {
        // A stream that nobody closes: the client waits until its own time-out, and no thread of the server waits with
        // it.
        const auto stream = std::make_shared<http::Stream>(text.size() + 1);
        stream->Write(text);
        response.body = stream;
    }
}

} // namespace

FaultyTimes::FaultyTimes(Faults faults)
    : faults_(std::move(faults))
{
}

void FaultyTimes::Set(Faults faults)
{
    const std::lock_guard lock(mutex_);
    faults_ = std::move(faults);
    taken_ = 0;
}

std::optional<Faults> FaultyTimes::Take(const http::Request& request)
{
    const bool isFile = request.path.starts_with(kAssets);
    const std::lock_guard lock(mutex_);
    const bool isMeant =
        faults_.where == Faults::Where::Everywhere || isFile == (faults_.where == Faults::Where::Files);
    if (!isMeant || (faults_.times > 0 && taken_ == faults_.times)) {
        return std::nullopt;
    }
    ++taken_;
    return faults_;
}

std::optional<http::Response> AnswerInstead(const Faults& faults, const http::Request& request, const std::string& base)
{
    if (faults.status) {
        http::Response response = ErrorAnswer(*faults.status, "The service was told to fail");
        if (faults.retryAfter) {
            response.headers.emplace_back("Retry-After", *faults.retryAfter);
        }
        return response;
    }
    if (faults.redirectTo || faults.redirectsToItself) {
        http::Response response = http::TextResponse(302, "text/plain", "");
        response.headers.emplace_back("Location", faults.redirectTo.value_or(base) + request.target);
        return response;
    }
    return std::nullopt;
}

void Spoil(const Faults& faults, http::Response& response)
{
    response.delay = faults.delay;
    if (faults.body) {
        response.body = *faults.body;
    }
    if (faults.announced != Faults::Length::Right) {
        Lie(response, faults.announced);
    }
    if (faults.secondHalf != Faults::SecondHalf::Sent) {
        Break(response, faults.secondHalf);
    }
}

} // namespace orvtools::stock::detail
