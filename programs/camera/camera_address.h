// A camera's address and its credentials, kept apart.

#ifndef TAVREN_PROGRAMS_CAMERA_ADDRESS_H
#define TAVREN_PROGRAMS_CAMERA_ADDRESS_H

#include <string>

namespace kel::tavren::programs {

// The lower transports that can be requested from a camera.
enum class Transport { automatic, tcp, udp };

struct Camera_Address {
  std::string location;  // rtsp://host:port/path, without user name and password
  std::string user;      // empty: no credentials
  std::string password;
  Transport transport = Transport::automatic;  // requested by the scheme: rtspt://, rtspu://
};

// Splits a URI into the location and the unescaped credentials. Throws Bus_Error if the URI is not
// an RTSP address; the error conceals the password.
Camera_Address parse_camera_address(const std::string &uri);

// Replaces the password in a URI with "***".
std::string conceal_password(const std::string &uri);

}  // namespace kel::tavren::programs

#endif
