#pragma once

#include <tools/zelt/panel/PageFiles.h>

#include <orvcore/text/Strings.h>
#include <tools/http/Message.h>

#include <functional>
#include <string>

namespace zelt {

/// @name What the page is answered
/// Any thread.
/// @{
orvtools::http::Response JSONResponse(std::string text, unsigned status = 200);
/// Why a request is not answered; the page shows the text as it is.
orvtools::http::Response Refusal(unsigned status, const std::string& why);
orvtools::http::Response PageResponse(const PageFile& file);
/// @param path of a picture or a video; empty: there is none
orvtools::http::Response PreviewResponse(const orvcore::UTF8String& path, bool isVideo);
/// What `make` answers, or a refusal with the reason of what it throws.
orvtools::http::Response AnswerOrWhy(const std::function<orvtools::http::Response()>& make);
/// @}

} // namespace zelt
