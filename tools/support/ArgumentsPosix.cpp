#include <tools/support/Arguments.h>

namespace orvtools {

std::vector<std::string> UTF8Arguments(int argc, const char* const* argv)
{
    return {argv, argv + argc};
}

} // namespace orvtools
