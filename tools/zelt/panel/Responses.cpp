#include <tools/zelt/panel/Responses.h>

#include <tools/zelt/output/Errors.h>

#include <orvcore/files/Paths.h>
#include <orvcore/json/JSONTextWriter.h>

namespace zelt {

namespace http = orvtools::http;

http::Response JSONResponse(std::string text, unsigned status)
{
    http::Response response = http::TextResponse(status, "application/json", std::move(text));
    response.headers.emplace_back("Cache-Control", "no-store");
    return response;
}

http::Response Refusal(unsigned status, const std::string& why)
{
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("error");
    writer.String(std::string_view(why));
    writer.EndObject();
    return JSONResponse(orvcore::ToNarrow(writer.Take()), status);
}

http::Response PageResponse(const PageFile& file)
{
    const std::string_view name = file.name;
    const std::string_view type = name.ends_with(".js")    ? "text/javascript; charset=utf-8"
                                  : name.ends_with(".css") ? "text/css; charset=utf-8"
                                  : name.ends_with(".svg") ? "image/svg+xml"
                                                           : "text/html; charset=utf-8";
    http::Response response = http::TextResponse(200, type, std::string(file.content));
    response.headers.emplace_back("Cache-Control", "no-cache");
    return response;
}

http::Response PreviewResponse(const orvcore::UTF8String& path, bool isVideo)
{
    if (path.empty()) {
        return Refusal(404, "there is no preview");
    }
    http::Response response;
    response.body = http::FileBody{orvcore::PathFromUTF8(path)};
    response.headers.emplace_back("Content-Type", isVideo ? "video/mp4" : "image/png");
    response.headers.emplace_back("Cache-Control", "private, max-age=86400"); // the address names the package's time
    return response;
}

http::Response AnswerOrWhy(const std::function<http::Response()>& make)
{
    try {
        return make();
    } catch (const UsageError& error) {
        return Refusal(400, error.what());
    } catch (const FileError& error) {
        return Refusal(409, error.GetFile() + ": " + error.what());
    } catch (const std::exception& error) {
        return Refusal(500, error.what());
    }
}

} // namespace zelt
