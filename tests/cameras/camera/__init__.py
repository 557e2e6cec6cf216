"""A camera for tests: RTP packets made by ffmpeg, served over RTSP, with misbehaviour on demand."""
