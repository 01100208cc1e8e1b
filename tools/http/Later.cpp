#include <tools/http/Later.h>

#include <utility>

namespace orvtools::http {

void Later::Answer(Response response)
{
    const std::lock_guard lock(mutex_);
    if (isAwaited_ && !response_) {
        response_ = std::move(response);
        if (wake_) {
            wake_();
        }
    }
}

bool Later::IsAwaited() const
{
    const std::lock_guard lock(mutex_);
    return isAwaited_;
}

void Later::OnAnswer(std::function<void()> wake)
{
    const std::lock_guard lock(mutex_);
    wake_ = std::move(wake);
    if (response_) { // before anybody waited
        wake_();
    }
}

Response Later::Take()
{
    const std::lock_guard lock(mutex_);
    isAwaited_ = false;
    wake_ = nullptr;
    return std::exchange(response_, std::nullopt).value();
}

void Later::Abandon()
{
    const std::lock_guard lock(mutex_);
    isAwaited_ = false;
    wake_ = nullptr;
    response_.reset();
}

} // namespace orvtools::http
