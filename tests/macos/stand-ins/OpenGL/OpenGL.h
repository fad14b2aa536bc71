// As much of CGL as the client uses.
#pragma once

using CGLContextObj = long*;

enum CGLError
{
    kCGLNoError = 0,
    kCGLBadContext = 10004
};

enum CGLContextEnable
{
    kCGLCEMPEngine = 313
};

extern "C" {
CGLContextObj CGLGetCurrentContext();
CGLError CGLEnable(CGLContextObj context, CGLContextEnable option);
}
