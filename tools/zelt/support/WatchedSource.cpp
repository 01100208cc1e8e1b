#include <tools/zelt/support/WatchedSource.h>

namespace zelt {

namespace {

std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>> AllButFirst(const std::vector<std::string>& folders)
{
    std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>> directories;
    for (std::size_t i = 1; i < folders.size(); ++i) {
        directories.emplace_back(orvcore::ToUTF8(folders[i]), orvcore::ToUTF8(folders[i]));
    }
    return directories;
}

} // namespace

WatchedSource::WatchedSource(const std::vector<std::string>& folders, std::function<void(std::exception_ptr)> onFailure)
    : LocalGraphicsSource(orvcore::ToUTF16(folders.front()), AllButFirst(folders))
    , onFailure_(std::move(onFailure))
{
}

void WatchedSource::Search(const std::vector<orvcore::UTF16String>& terms,
                           std::vector<boost::shared_ptr<orvcapsule::CapsuleEntry>>& results, int first, int count,
                           int& total, boost::shared_ptr<orvcapsule::CheckCancel> cancel) const
{
    try {
        LocalGraphicsSource::Search(terms, results, first, count, total, std::move(cancel));
    } catch (...) {
        onFailure_(std::current_exception());
        throw;
    }
}

void WatchedSource::SearchByDirectory(OnDirectory onDirectory, std::vector<orvcore::UTF16String>& directories,
                                      boost::shared_ptr<orvcapsule::CheckCancel> cancel)
{
    try {
        LocalGraphicsSource::SearchByDirectory(std::move(onDirectory), directories, std::move(cancel));
    } catch (...) {
        onFailure_(std::current_exception());
        throw;
    }
}

} // namespace zelt
