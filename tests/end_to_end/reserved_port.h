// Reserves a port for a camera that is not running all the time.

#ifndef TAVREN_TESTS_RESERVED_PORT_H
#define TAVREN_TESTS_RESERVED_PORT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include <gtest/gtest.h>

namespace kel::tavren::tests {

// A port on 127.0.0.1 that the system gives to no other program. It refuses connections until a
// program that is started with its number listens on it.
class Reserved_Port {
public:
  Reserved_Port()
      : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), number_(bind_to_any()) {}
  ~Reserved_Port() { close(socket_); }
  Reserved_Port(const Reserved_Port &) = delete;
  Reserved_Port &operator=(const Reserved_Port &) = delete;

  const std::string &number() const noexcept { return number_; }

private:
  std::string bind_to_any() const {
    const int reuse = 1;
    EXPECT_EQ(setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse), 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr *>(&address), size), 0);
    EXPECT_EQ(getsockname(socket_, reinterpret_cast<sockaddr *>(&address), &size), 0);
    return std::to_string(ntohs(address.sin_port));
  }

  int socket_;
  std::string number_;
};

}  // namespace kel::tavren::tests

#endif
