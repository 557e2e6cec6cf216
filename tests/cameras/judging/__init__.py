"""Runs record_camera against cameras, and checks its output and its files."""
