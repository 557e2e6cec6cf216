// Why a camera cannot be reached.

#ifndef TAVREN_PROGRAMS_CONNECTION_FAILURE_H
#define TAVREN_PROGRAMS_CONNECTION_FAILURE_H

#include <exception>

#include "camera_source.h"

namespace kel::tavren::programs {

// Adds the reason to a failure to connect, for which the framework has a general text only: the
// host is not known, the port is closed, the certificate is not trusted. The camera is connected to
// once more to find out, for at most a few seconds. Returns other failures as they are.
std::exception_ptr with_connection_failure(const std::exception_ptr &failure,
                                           const Camera_Options &options);

// Whether it is of no use to try again: the camera refuses the credentials, or an element is
// missing.
bool is_permanent(const std::exception_ptr &failure);

}  // namespace kel::tavren::programs

#endif
