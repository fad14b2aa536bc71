// As much of CGL as the client uses; EngineTest.cpp implements it.
#pragma once

using CGLContextObj = long*;
using CGLError = int;
constexpr CGLError kCGLNoError = 0;
constexpr int kCGLCEMPEngine = 313;

CGLContextObj CGLGetCurrentContext();
CGLError CGLEnable(CGLContextObj context, int option);
