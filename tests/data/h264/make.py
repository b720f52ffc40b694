#!/usr/bin/env python3
"""Makes quadrants.h264: make.py quadrants.h264. Needs gst-launch-1.0 and GStreamer's openh264enc."""

import subprocess
import sys

WIDTH, HEIGHT, PICTURES = 160, 96, 20
COLOURS = [[(220, 30, 30), (30, 180, 30)], [(30, 30, 220), (230, 230, 230)]]  # red, green / blue, white


def picture(number):
    """Returns a picture as RGB: four quadrants, and a grey square of 16 pixels that moves along the middle."""
    rows = bytearray()
    for y in range(HEIGHT):
        for x in range(WIDTH):
            grey = 40 <= y < 56 and 4 * number + 32 <= x < 4 * number + 48
            rows += bytes((128, 128, 128) if grey else COLOURS[y * 2 // HEIGHT][x * 2 // WIDTH])
    return bytes(rows)


subprocess.run(
    ["gst-launch-1.0", "-q", "fdsrc", "fd=0", "!", "rawvideoparse", f"width={WIDTH}", f"height={HEIGHT}", "format=rgb",
     "framerate=25/1", "!", "videoconvert", "!", "video/x-raw,format=I420", "!",
     "openh264enc", "gop-size=10", "num-slices=1", "bitrate=200000", "rate-control=off", "!",
     "video/x-h264,stream-format=byte-stream,alignment=au", "!", "filesink", f"location={sys.argv[1]}"],
    input=b"".join(picture(number) for number in range(PICTURES)), check=True)
