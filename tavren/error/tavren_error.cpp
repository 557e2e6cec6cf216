#include <tavren/error/tavren_error.h>

namespace kel::tavren {

Tavren_Error<std::exception>::~Tavren_Error() = default;

Backend_Error<std::exception>::~Backend_Error() = default;

template class Tavren_Error<std::logic_error>;
template class Tavren_Error<std::runtime_error>;
template class Backend_Error<std::runtime_error>;
template TAVREN_CAPTURE_EXPORT
    Backend_Error<std::runtime_error>::Backend_Error(TEC::Tavren_Error_Code, std::string);

}  // namespace kel::tavren
