// A camera's address and the credentials for it, kept apart.

#ifndef TAVREN_PROGRAMS_CAMERA_ADDRESS_H
#define TAVREN_PROGRAMS_CAMERA_ADDRESS_H

#include <string>

namespace kel::tavren::programs {

// The lower transports that a camera may be asked for.
enum class Transport { automatic, tcp, udp };

struct Camera_Address {
  std::string location;  // rtsp://host:port/path, without user and password
  std::string user;      // empty: no credentials
  std::string password;
  Transport transport = Transport::automatic;  // that the scheme asks for: rtspt://, rtspu://
};

// Splits a URI into location and credentials, which are unescaped. Throws Bus_Error, with the
// password concealed, if the URI is not an RTSP address.
Camera_Address parse_camera_address(const std::string &uri);

// Replaces the password in a URI by "***".
std::string conceal_password(const std::string &uri);

}  // namespace kel::tavren::programs

#endif
