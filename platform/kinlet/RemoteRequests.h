#pragma once

#include <orvcore/text/Strings.h>

#include <utility>
#include <vector>

namespace kinlet {

/// How a collaboration server is reached and who asks. All texts are the host's; this library stores them and opens
/// no connection.
struct ServerConnection {
    orvcore::UTF16String serverDiscoveryURL;
    /// Port number as text.
    orvcore::UTF16String earPort;
    orvcore::UTF16String userName;
    orvcore::UTF16String authToken;
    orvcore::UTF16String authTokenType;
    /// Additional request headers, name and value, in order; a name may come more than once.
    std::vector<std::pair<orvcore::UTF16String, orvcore::UTF16String>> headers;

    bool operator==(const ServerConnection&) const = default;
};

/// Names one asset by the production that holds it, that production's revision, and its own identifier.
struct RemoteAssetInfo {
    orvcore::UTF16String productionIdentifier;
    orvcore::UTF16String productionRevision;
    orvcore::UTF16String assetIdentifier;

    bool operator==(const RemoteAssetInfo&) const = default;
};

/// Names one revision of a production.
struct RemoteProductionInfo {
    orvcore::UTF16String productionIdentifier;
    orvcore::UTF16String revision;
    orvcore::UTF16String displayName;

    bool operator==(const RemoteProductionInfo&) const = default;
};

/// A request for one asset of a collaboration server.
struct RemoteAssetRequest {
    ServerConnection serverConnection;
    RemoteAssetInfo assetInfo;

    bool operator==(const RemoteAssetRequest&) const = default;
};

/// A request for a production of a collaboration server.
struct RemoteProductionRequest {
    ServerConnection serverConnection;
    RemoteProductionInfo productionInfo;
    /// Whether the production is to be made when it does not exist.
    bool createNewProduction = false;

    bool operator==(const RemoteProductionRequest&) const = default;
};

} // namespace kinlet
