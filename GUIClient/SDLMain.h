#pragma once

/// The program, called once by the platform's start-up code on the main thread; the result is the exit
/// status.
///
/// Options: --help, --host, --port, --udp-timeout. Connects, opens the window, and runs until the player
/// leaves.
///
///     0   the player left, or the server closed the connection
///     1   help was asked for, there is no server, SDL did not start, or the server fell silent
///     2   no such window
///     255 an image of an unsupported depth among the resources
///
/// A malformed command line is not caught: it ends the process abnormally.
extern "C" int SDL_main(int argc, char** argv);
