#include "GUIClient/SDLMain.h"

#include "Common/DebugPrint.h"
#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "GUIClient/drawGL.h"
#include "engine/Engine.h"
#include "network/NetworkHelper.h"

#include <SDL.h>
#include <boost/program_options/options_description.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/variables_map.hpp>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <string>

namespace {

namespace po = boost::program_options;

constexpr float framesPerSecond = 60.0F;

po::options_description allowedOptions()
{
    po::options_description options("Allowed options");
    auto add = options.add_options();
    add("help", "produce help message");
    add("host", po::value<std::string>()->default_value("127.0.0.1"), "set game server host");
    add("port", po::value<std::string>()->default_value("21042"), "set game server port");
    add("udp-timeout", po::value<unsigned int>()->default_value(10),
        "exit if no packets received within this timout");
    return options;
}

po::variables_map parse(int argc, char** argv, const po::options_description& options)
{
    try {
        po::variables_map values;
        po::store(po::parse_command_line(argc, argv, options), values);
        po::notify(values);
        return values;
    } catch (const po::error&) {
        // The handler of uncaught exceptions calls what(). That never returns if an argument contains one of
        // its placeholders, such as %value%.
        if (std::none_of(argv, argv + argc,
                         [](const char* text) { return std::strchr(text, '%') != nullptr; })) {
            throw;
        }
        std::cerr << "Malformed command line\n";
        std::abort();
    }
}

int play(const std::string& host, const std::string& port, unsigned int udpTimeout)
{
    if (!NetworkHelper::getInstance()->connect(host, port, udpTimeout)) {
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
    const po::options_description options = allowedOptions();
    const po::variables_map values = parse(argc, argv, options);
    if (values.count("help") != 0) {
        std::cout << options << "\n";
        return EXIT_FAILURE;
    }
    return play(values["host"].as<std::string>(), values["port"].as<std::string>(),
                values["udp-timeout"].as<unsigned int>());
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
