// The depayloaders among which the library chooses for an RTP proxy.

#ifndef TAVREN_TESTS_DEPAYLOADERS_H
#define TAVREN_TESTS_DEPAYLOADERS_H

namespace kel::tavren::tests {

// In the order in which the library tries them.
inline constexpr const char *depayloaders[] = {"rtph264depay", "rtpjpegdepay", "rtppcmudepay",
                                               "rtpmp4adepay", "rtpmp4vdepay", "rtpmp4gdepay"};

}  // namespace kel::tavren::tests

#endif
