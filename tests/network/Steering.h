#pragma once

#include <string>

/// The frame of a client that looks along the quaternion w 1, x 2, y 3, z 4 and holds the controls 7.
inline const std::string steering(
    "\x19\0\x04\x0A\x14\x0D\0\0\0\x40\x15\0\0\x40\x40\x1D\0\0\x80\x40\x25\0\0\x80\x3F"
    "\x10\x07",
    27);
