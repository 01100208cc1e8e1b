#pragma once

#include <orvcore/text/Strings.h>
#include <orvstorage/ZipFile.h>

#include <cstdint>
#include <exception>

namespace orvstorage::detail {

/// Counts the bytes of a packing and asks the caller, now and then, whether to go on. What the caller's function
/// throws is kept, for it must not pass through the zip library.
class PackProgress {
public:
    PackProgress(const ZipProgress& progress, void* opaque, std::uint64_t total)
        : progress_(progress)
        , opaque_(opaque)
        , total_(total)
    {
    }

    /// True to go on.
    bool Advance(std::uint64_t bytes);
    /// The last question, when all is written and nothing replaced.
    bool Finish()
    {
        return Ask(1.0);
    }
    /// What the caller's function threw, or null.
    std::exception_ptr Thrown() const
    {
        return thrown_;
    }

    /// The entry being packed.
    orvcore::UTF8String current;

private:
    bool Ask(double fraction);

    const ZipProgress& progress_;
    void* opaque_;
    std::uint64_t total_;
    std::uint64_t done_ = 0;
    std::uint64_t nextAsk_ = 0;
    bool cancelled_ = false;
    std::exception_ptr thrown_;
};

} // namespace orvstorage::detail
