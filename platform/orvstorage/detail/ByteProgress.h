#pragma once

#include <orvcore/text/Strings.h>
#include <orvstorage/ZipFile.h>

#include <atomic>
#include <cstdint>
#include <exception>

namespace orvstorage::detail {

/// Counts the bytes of a packing or unpacking and asks the caller, now and then, whether to go on. What the caller's
/// function throws is kept, for it must not pass through the zip library. All but Count is for the caller's thread.
class ByteProgress {
public:
    ByteProgress(const ZipProgress& progress, void* opaque)
        : progress_(progress)
        , opaque_(opaque)
    {
    }

    /// How many bytes there are to count, in all. Said once, before the first question.
    void Expect(std::uint64_t total) noexcept
    {
        total_ = total;
    }

    /// Counts what any thread has done.
    void Count(std::uint64_t bytes) noexcept
    {
        done_ += bytes;
    }
    /// Asks when enough has been done since the last question. True to go on.
    bool MayGoOn()
    {
        return done_ < nextAsk_ ? !cancelled_ : Ask();
    }
    bool Advance(std::uint64_t bytes)
    {
        Count(bytes);
        return MayGoOn();
    }
    /// Asks however little has been done.
    bool Ask();
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
    std::uint64_t total_ = 0;
    // Written by all threads that unpack; all other members belong to the caller's thread.
    std::atomic<std::uint64_t> done_ = 0;
    // 0, so that the first question comes before any work: a caller that is cancelled already costs nothing.
    std::uint64_t nextAsk_ = 0;
    bool cancelled_ = false;
    std::exception_ptr thrown_;
};

} // namespace orvstorage::detail
