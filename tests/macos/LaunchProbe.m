// An SDL_main that tells what the start-up code gave it, one fact a line, and ends with status 7. The desktop
// asks for the document "/first" before any that GNUstep is told of, which can be told of one only.
#import <Cocoa/Cocoa.h>
#include <SDL.h>

#include <stdio.h>
#include <unistd.h>

int SDL_main(int argc, char** argv);

@interface Desktop : NSObject
@end

@implementation Desktop

+ (void)load
{
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(openDocument:)
                                                 name:NSApplicationWillFinishLaunchingNotification
                                               object:nil];
}

+ (void)openDocument:(NSNotification*)notification
{
    (void)notification;
    [[NSApp delegate] application:NSApp openFile:@"/first"];
}

@end

@implementation NSApplication (ActivationPolicy)

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy
{
    printf("%s application\n", policy == NSApplicationActivationPolicyRegular ? "foreground" : "other");
    return YES;
}

@end

static void printArguments(int argc, char** argv)
{
    printf("SDL_main");
    for (int i = 1; i < argc; ++i) {
        printf(" [%s]", argv[i]);
    }
    puts(argv[argc] == NULL ? "" : " without an end");
}

static void printFolder(void)
{
    char folder[1024];
    printf("in %s\n", getcwd(folder, sizeof folder));
}

static void printLateDocument(void)
{
    const BOOL isTaken = [[NSApp delegate] application:NSApp openFile:@"/late"];
    printf("a late document is %s\n", isTaken ? "taken" : "refused");
}

static void printKey(NSMenuItem* item)
{
    const NSUInteger modifiers = [item keyEquivalentModifierMask];
    if ([[item keyEquivalent] length] > 0) {
        printf(", %s%s%s%s%s", (modifiers & NSControlKeyMask) != 0 ? "control " : "",
               (modifiers & NSAlternateKeyMask) != 0 ? "option " : "",
               (modifiers & NSShiftKeyMask) != 0 ? "shift " : "",
               (modifiers & NSCommandKeyMask) != 0 ? "command " : "", [[item keyEquivalent] UTF8String]);
    }
}

static void printMenu(NSMenu* menu)
{
    for (NSMenuItem* item in [menu itemArray]) {
        if ([item isSeparatorItem]) {
            puts("--");
            continue;
        }
        printf("%s", [[item title] UTF8String]);
        printKey(item);
        printf([item hasSubmenu] ? ":\n" : ", %s\n", sel_getName([item action]));
        printMenu([item submenu]);
    }
}

// Chooses the last item of the application's menu.
static void quit(void)
{
    SDL_Init(SDL_INIT_VIDEO);
    NSMenu* menu = [[[NSApp mainMenu] itemAtIndex:0] submenu];
    [menu performActionForItemAtIndex:[menu numberOfItems] - 1];
    SDL_Event event = {0};
    while (SDL_PollEvent(&event) != 0 && event.type != SDL_QUIT) {
    }
    puts(event.type == SDL_QUIT ? "Quit asks the main loop to end" : "Quit asks for nothing");
    SDL_Quit();
}

int SDL_main(int argc, char** argv)
{
    printArguments(argc, argv);
    printFolder();
    printLateDocument();
    printMenu([NSApp mainMenu]);
    quit();
    return 7;
}
