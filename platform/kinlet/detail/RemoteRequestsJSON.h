#pragma once

#include <kinlet/RemoteRequests.h>
#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

// An array of [name, value] pairs, since a name may come twice. An object of name to value reads as well.
struct HeadersCodec {
    using Headers = std::vector<std::pair<UTF16String, UTF16String>>;
    static bool Read(const JSONNode& node, Headers& out)
    {
        if (!node.IsArray() && !node.IsObject()) {
            return false;
        }
        out.clear();
        for (const JSONNode& child : node.Children()) {
            auto& header = out.emplace_back();
            if (node.IsObject()) {
                header.first = ToUTF16(child.Key());
                if (!Codec<UTF16String>::Read(child, header.second)) {
                    return false;
                }
            } else if (!ReadPair(child, header)) {
                return false;
            }
        }
        return true;
    }
    static void Write(JSONSink& sink, const Headers& value)
    {
        sink.BeginArray();
        for (const auto& [name, content] : value) {
            sink.BeginArray();
            sink.String(std::u16string_view(name));
            sink.String(std::u16string_view(content));
            sink.EndArray();
        }
        sink.EndArray();
    }

private:
    static bool ReadPair(const JSONNode& node, Headers::value_type& out)
    {
        const auto parts = node.Children();
        return node.IsArray() && parts.size() == 2 && Codec<UTF16String>::Read(parts[0], out.first) &&
               Codec<UTF16String>::Read(parts[1], out.second);
    }
};

// A text; a whole number reads as its digits, since servers number their revisions.
struct RevisionCodec {
    static bool Read(const JSONNode& node, UTF16String& out)
    {
        std::int64_t number = 0;
        if (!node.Get(number)) {
            return Codec<UTF16String>::Read(node, out);
        }
        out = ToUTF16(std::string_view(std::to_string(number)));
        return true;
    }
    static void Write(JSONSink& sink, const UTF16String& value)
    {
        sink.String(std::u16string_view(value));
    }
};

template <>
struct JSONTable<kinlet::ServerConnection> {
    static constexpr auto fields =
        Fields(Optional("mServerDiscoveryURL", &kinlet::ServerConnection::serverDiscoveryURL),
               Optional("mEARPort", &kinlet::ServerConnection::earPort),
               Optional("mUserName", &kinlet::ServerConnection::userName),
               Optional("mAuthToken", &kinlet::ServerConnection::authToken),
               Optional("mAuthTokenType", &kinlet::ServerConnection::authTokenType),
               Optional<HeadersCodec>("mHeaders", &kinlet::ServerConnection::headers));
};

template <>
struct JSONTable<kinlet::RemoteAssetInfo> {
    static constexpr auto fields =
        Fields(Optional("mProductionIdentifier", &kinlet::RemoteAssetInfo::productionIdentifier),
               Optional<RevisionCodec>("mProductionRevision", &kinlet::RemoteAssetInfo::productionRevision),
               Optional("mAssetIdentifier", &kinlet::RemoteAssetInfo::assetIdentifier));
};

template <>
struct JSONTable<kinlet::RemoteProductionInfo> {
    static constexpr auto fields =
        Fields(Optional("mProductionIdentifier", &kinlet::RemoteProductionInfo::productionIdentifier),
               Optional<RevisionCodec>("mRevision", &kinlet::RemoteProductionInfo::revision),
               Optional("mDisplayName", &kinlet::RemoteProductionInfo::displayName));
};

template <>
struct JSONTable<kinlet::RemoteAssetRequest> {
    static constexpr auto fields = Fields(Optional("mServerConnectInfo", &kinlet::RemoteAssetRequest::serverConnection),
                                          Optional("mAssetInfo", &kinlet::RemoteAssetRequest::assetInfo));
};

template <>
struct JSONTable<kinlet::RemoteProductionRequest> {
    static constexpr auto fields =
        Fields(Optional("mServerConnectInfo", &kinlet::RemoteProductionRequest::serverConnection),
               Optional("mProductionInfo", &kinlet::RemoteProductionRequest::productionInfo),
               Optional("mCreateNewProduction", &kinlet::RemoteProductionRequest::createNewProduction));
};

} // namespace orvcore::serialization::detail
