"""A camera for tests: serves RTP packets made by ffmpeg over RTSP, with optional misbehaviour."""
