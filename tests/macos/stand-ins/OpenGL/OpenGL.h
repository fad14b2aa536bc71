// As much of CGL as the client uses.
#pragma once

constexpr int kCGLNoError = 0, kCGLCEMPEngine = 313;

constexpr auto CGLGetCurrentContext = [] { return nullptr; };
constexpr auto CGLEnable = [](const long*, int) { return kCGLNoError; };
