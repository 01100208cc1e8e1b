#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace test {

/// What a program that has ended cost.
struct MeasuredRun {
    int exitCode = -1; ///< -1: it could not be started, or did not end by itself
    double processorSeconds = 0;
    std::uint64_t peakBytes = 0; ///< of memory in use; on some systems at least what the caller itself used
};

/// Runs a program to its end, both its outputs into the file `output`. Arguments must not hold quotes.
MeasuredRun RunMeasured(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                        const std::filesystem::path& output);

} // namespace test
