#pragma once

#include <sources/LocalGraphicsSource.h>

#include <exception>
#include <functional>

namespace zelt {

/// A local source that keeps what ended its last listing: to the manager a source that fails merely contributes
/// nothing, while someone at a command line wants to know why.
class WatchedSource : public orvcapsule::LocalGraphicsSource {
public:
    /// @param onFailure  is called on the listing's thread, before its result is delivered
    WatchedSource(const std::vector<std::string>& folders, std::function<void(std::exception_ptr)> onFailure);

    void Search(const std::vector<orvcore::UTF16String>& terms,
                std::vector<boost::shared_ptr<orvcapsule::CapsuleEntry>>& results, int first, int count, int& total,
                boost::shared_ptr<orvcapsule::CheckCancel> cancel) const override;
    void SearchByDirectory(OnDirectory onDirectory, std::vector<orvcore::UTF16String>& directories,
                           boost::shared_ptr<orvcapsule::CheckCancel> cancel) override;

private:
    const std::function<void(std::exception_ptr)> onFailure_;
};

} // namespace zelt
