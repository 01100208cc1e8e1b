#include <tools/http/detail/PortSharing.h>

const bool orvtools::http::detail::kReuseAddress = true;
