"""Runs record_camera against cameras, and judges what it says and writes."""
