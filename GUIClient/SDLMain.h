#pragma once

/// The program. The platform's start-up code calls it once, on the main thread; the result is the exit
/// status.
///
/// Options: --help, --host, --port, --udp-timeout. Connects, opens the window, and runs until the player
/// leaves.
///
///     0   the player left, or the server closed the connection
///     1   --help was given, connecting failed, SDL did not start, or no datagram arrived for too long
///     2   SDL could not open the window
///     255 a resource image has an unsupported depth
///
/// A malformed command line aborts the process.
extern "C" int SDL_main(int argc, char** argv);
