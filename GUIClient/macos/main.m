// The start-up code of macOS. It makes a Cocoa application ready for SDL, then calls SDL_main. It handles
// starts from the desktop and from a shell.
#undef NDEBUG  // the assertion below does work, in release builds as well

#import "GUIClient/macos/MenuBar.h"

#import <Cocoa/Cocoa.h>
#include <SDL.h>

#include <assert.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#undef main  // SDL's headers rename it to SDL_main; the function below is the real one

int SDL_main(int argc, char** argv);  // see GUIClient/SDLMain.h, which is C++

static int savedCount;         // without the null entry at the end
static char** savedArguments;  // SDL_main's; lives as long as the process
static BOOL isLaunchedByDesktop;
static BOOL isEntryCalled;

// ---- the arguments ---------------------------------------------------------------------------------------

static void* orExit(void* memory)
{
    if (memory == NULL) {
        fputs("No memory for the command line\n", stderr);
        exit(EXIT_FAILURE);
    }
    return memory;
}

// Makes room for `count` arguments and the null entry, and writes that.
static void resizeArguments(int count)
{
    savedArguments = orExit(realloc(savedArguments, ((size_t)count + 1) * sizeof *savedArguments));
    savedArguments[count] = NULL;
    savedCount = count;
}

// The desktop adds a process serial number when it launches a bundle. The parser would refuse it.
static void saveArguments(int argc, char** argv)
{
    isLaunchedByDesktop = argc >= 2 && strncmp(argv[1], "-psn", 4) == 0;
    resizeArguments(isLaunchedByDesktop ? 1 : argc);
    memcpy(savedArguments, argv, (size_t)savedCount * sizeof *argv);
}

static void appendArgument(const char* text)
{
    resizeArguments(savedCount + 1);
    savedArguments[savedCount - 1] = orExit(strdup(text));
}

// ---- the application -------------------------------------------------------------------------------------

/// An application whose Quit ends the main loop, as closing the window does, instead of the process.
@interface ClientApplication : NSApplication
@end

@implementation ClientApplication

- (void)terminate:(id)sender
{
    (void)sender;
    SDL_Event event;
    memset(&event, 0, sizeof event);
    event.type = SDL_QUIT;
    SDL_PushEvent(&event);
}

@end

/// Calls SDL_main, once, when the application has finished launching.
@interface LaunchDelegate : NSObject <NSApplicationDelegate>
@end

static void changeToFolderOfBundle(void)
{
    NSString* folder = [[[NSBundle mainBundle] bundlePath] stringByDeletingLastPathComponent];
    // An abort prints the assertion's text: the name and the space before the bracket are part of the
    // message.
    const char* parentdir = [folder fileSystemRepresentation];
    // clang-format off
    assert(chdir (parentdir) == 0);
    // clang-format on
}

@implementation LaunchDelegate

// The desktop may ask for a document at any time. After the launch SDL_main has read its arguments, so later
// requests are refused.
- (BOOL)application:(NSApplication*)application openFile:(NSString*)filename
{
    (void)application;
    if (!isLaunchedByDesktop || isEntryCalled) {
        return NO;
    }
    appendArgument([filename UTF8String]);
    return YES;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification
{
    (void)notification;
    if (isLaunchedByDesktop) {
        changeToFolderOfBundle();
    }
    isEntryCalled = YES;
    exit(SDL_main(savedCount, savedArguments));
}

@end

int main(int argc, char** argv)
{
    saveArguments(argc, argv);
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    NSApplication* application = [ClientApplication sharedApplication];
    [application setActivationPolicy:NSApplicationActivationPolicyRegular];
    [application activateIgnoringOtherApps:YES];
    installMenuBar(application);
    [application setDelegate:[[LaunchDelegate alloc] init]];  // not retained there, needed to the end
    [application run];                                        // ends within the delegate
    [pool release];
    return EXIT_FAILURE;
}
