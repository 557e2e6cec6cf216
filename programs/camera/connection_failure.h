// Finds the reason why a camera cannot be reached.

#ifndef TAVREN_PROGRAMS_CONNECTION_FAILURE_H
#define TAVREN_PROGRAMS_CONNECTION_FAILURE_H

#include <exception>

#include "camera_source.h"

namespace kel::tavren::programs {

// Adds the reason to a connection failure. The framework reports only a general text if the host is
// unknown, the port is closed or the certificate is not trusted. To find the reason, connects to
// the camera again, for a few seconds at most. Returns other failures unchanged.
std::exception_ptr with_connection_failure(const std::exception_ptr &failure,
                                           const Camera_Options &options);

// Returns whether retrying is pointless: the camera rejects the credentials, or an element is
// missing.
bool is_permanent(const std::exception_ptr &failure);

}  // namespace kel::tavren::programs

#endif
