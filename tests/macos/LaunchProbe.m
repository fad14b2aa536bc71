// Stands in for the game: prints what the start-up code of macOS gave it, chooses Quit, and ends with
// status 7.
#include <SDL.h>

#include <stdio.h>
#include <unistd.h>

int SDL_main(int argc, char** argv);

@interface LaunchDelegate : NSObject <NSApplicationDelegate>
@end

@implementation LaunchDelegate (Desktop)

// Asks for the document "/first" before GNUstep asks for its own.
- (void)applicationWillFinishLaunching:(NSNotification*)notification
{
    [self application:[notification object] openFile:@"/first"];
}

@end

@implementation NSApplication (ActivationPolicy)

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy
{
    return printf("policy %d\n", (int)policy) > 0;
}

@end

static void printMenu(NSMenu* menu)
{
    for (NSMenuItem* item in [menu itemArray]) {
        printf("%s, %s, %lx%s\n", [[item title] UTF8String], sel_getName([item action]),
               (unsigned long)[item keyEquivalentModifierMask], [[item keyEquivalent] UTF8String]);
        printMenu([item submenu]);
    }
}

int SDL_main(int argc, char** argv)
{
    char folder[1024];
    printf("in %s:", getcwd(folder, sizeof folder));
    for (int i = 1; i <= argc; ++i) {
        printf(" %s", argv[i] != NULL ? argv[i] : "end\n");
    }
    printf("late document: %d\n", [[NSApp delegate] application:NSApp openFile:@"/late"]);
    printMenu([NSApp mainMenu]);
    SDL_Init(SDL_INIT_VIDEO);
    NSMenu* menu = [[[NSApp mainMenu] itemAtIndex:0] submenu];
    [menu performActionForItemAtIndex:[menu numberOfItems] - 1];
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        puts(event.type == SDL_QUIT ? "quit" : "another event");
    }
    SDL_Quit();
    return 7;
}
