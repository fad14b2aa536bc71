// The start-up code of platforms on which a desktop starts programs as a shell does.
#include "GUIClient/SDLMain.h"

int main(int argc, char** argv)
{
    return SDL_main(argc, argv);
}
