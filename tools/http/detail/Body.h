#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

namespace orvtools::http {

class Stream;

namespace detail {

/// What follows a block of a body.
enum class Next : std::uint8_t {
    More,   ///< ask again when it is sent
    Wait,   ///< there is none now; the body tells when to ask again
    End,    ///< it was the last
    Broken, ///< the rest cannot be had
};

/// A response's body, read by the connection a block at a time.
class Body {
public:
    Body() = default;
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;
    virtual ~Body() = default;

    /// Appends the next block, at most about kBlock bytes.
    virtual Next Read(std::string& out) = 0;
    /// What a body calls, on any thread, after it has answered Wait. Set once, before the first Read.
    virtual void OnReady(std::function<void()> ready);

    static constexpr std::size_t kBlock = std::size_t{128} << 10;
};

class TextBody final : public Body {
public:
    explicit TextBody(std::string text);
    Next Read(std::string& out) override;

private:
    const std::string text_;
    std::size_t at_ = 0;
};

class FilePart final : public Body {
public:
    /// `size` bytes from `first`; a file that is shorter by now is broken.
    /// @throws std::filesystem::filesystem_error  when it cannot be opened
    FilePart(const std::filesystem::path& path, std::uint64_t first, std::uint64_t size);
    Next Read(std::string& out) override;

private:
    std::ifstream file_;
    std::uint64_t left_;
};

class StreamBody final : public Body {
public:
    /// @param chunked  in the chunks of HTTP/1.1, which tell where the body ends
    StreamBody(std::shared_ptr<Stream> stream, bool chunked);
    ~StreamBody() override;
    Next Read(std::string& out) override;
    void OnReady(std::function<void()> ready) override;

private:
    const std::shared_ptr<Stream> stream_;
    const bool chunked_;
};

} // namespace detail
} // namespace orvtools::http
