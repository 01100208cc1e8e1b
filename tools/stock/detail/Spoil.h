#pragma once

#include <tools/http/Message.h>
#include <tools/stock/Faults.h>

#include <mutex>
#include <optional>
#include <string>

namespace orvtools::stock::detail {

/// Says which requests suffer. Any thread may use it.
class FaultyTimes {
public:
    explicit FaultyTimes(Faults faults);

    void Set(Faults faults);
    /// The faults that this request is to suffer; it counts as one of `times`.
    std::optional<Faults> Take(const http::Request& request);

private:
    std::mutex mutex_;
    Faults faults_;
    std::uint32_t taken_ = 0;
};

/// The answer to give instead of any other, if that is what the faults say.
std::optional<http::Response> AnswerInstead(const Faults& faults, const http::Request& request,
                                            const std::string& base);
/// Does to a good answer what the faults say.
void Spoil(const Faults& faults, http::Response& response);

} // namespace orvtools::stock::detail
