// As much of CGL as the client uses.
#pragma once

constexpr int kCGLNoError = 0, kCGLCEMPEngine = 313;

inline int answer = kCGLNoError;

constexpr auto CGLGetCurrentContext = [] { return nullptr; };
constexpr auto CGLEnable = [](const long*, int option) { return option == kCGLCEMPEngine ? answer : 1; };
