#pragma once

#include <tools/http/Message.h>
#include <tools/stock/Faults.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvtools::stock {

struct ServiceOptions {
    std::filesystem::path folder;      ///< its packages, and those below, are the assets
    std::uint32_t copies = 1;          ///< how many assets there are of each package
    std::string address = "127.0.0.1"; ///< of this machine
    std::uint16_t port = 0;            ///< 0: one that is free
    std::string token = {};            ///< bearer token that searches must carry; empty: none
    Faults faults = {};
    std::function<void(const http::Request&)> observe = {}; ///< told of each request, on one of the server's threads
};

/// A development service over packages in a folder, which is read once. It speaks the contract of
/// `docs/stock-service.md`.
class StockService {
public:
    /// @throws std::filesystem::filesystem_error  when the folder cannot be read
    /// @throws std::system_error  when the address cannot be listened at
    explicit StockService(ServiceOptions options);
    StockService(const StockService&) = delete;
    StockService& operator=(const StockService&) = delete;
    /// Stops, in the middle of answers too.
    ~StockService();

    /// The base URL: "http://127.0.0.1:8080".
    std::string Origin() const;
    std::size_t AssetCount() const;
    /// Packages whose definition cannot be read, which are no assets, and sub-folders that cannot be read.
    const std::vector<std::filesystem::path>& Unreadable() const;
    /// From the next request on. Any thread.
    void SetFaults(Faults faults);

private:
    class Impl;
    const std::unique_ptr<Impl> impl_;
};

} // namespace orvtools::stock
