#include "GUIClient/SDLMain.h"

#include "Common/DebugPrint.h"
#include "GUIClient/ClientOptions.h"
#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "GUIClient/drawGL.h"
#include "engine/Engine.h"
#include "network/NetworkHelper.h"

#include <SDL.h>

#include <csignal>
#include <cstdlib>
#include <new>

namespace {

constexpr float framesPerSecond = 60.0F;

int play(const ClientOptions& options)
{
    if (!NetworkHelper::getInstance()->connect(options.host, options.port, options.udpTimeout)) {
        return EXIT_FAILURE;
    }
    VT.init();
    VTEntryPoint::getInstance()->init();
    Helpers::registerMainLoopFunction(drawGL, framesPerSecond);
    Helpers::run();
    NetworkHelper::getInstance()->disconnect();
    SDL_Quit();
    return EXIT_SUCCESS;
}

int run(int argc, char** argv)
{
    ClientOptions options;
    return readClientOptions(argc, argv, options) ? play(options) : EXIT_FAILURE;
}

}  // namespace

int SDL_main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);  // a closed standard output must not end the game,
    std::signal(SIGXFSZ, SIG_IGN);  // nor a file that has reached the limit of its size
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        DebugPrint("Out of memory - exiting\n");
        return EXIT_FAILURE;
    }
}
