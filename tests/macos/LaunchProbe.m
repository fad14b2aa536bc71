// An SDL_main that tells what the start-up code gave it, one fact a line, and ends with status 7. Where
// PROBE_WINDOW is set it opens a window instead of ending, and ends with status 0 on SDL_QUIT.
#import <Cocoa/Cocoa.h>
#include <SDL.h>

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

int SDL_main(int argc, char** argv);

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
        printf(", %s%s%s", (modifiers & NSAlternateKeyMask) != 0 ? "option " : "",
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

// The middle of the item, in pixels from the screen's top left corner; meaningless while it is not shown.
static NSPoint placeOf(NSMenu* menu, NSInteger index)
{
    NSMenuView* view = [menu menuRepresentation];
    const NSRect item = [view convertRect:[view rectOfItemAtIndex:index] toView:nil];
    const NSPoint place = [[menu window] convertBaseToScreen:NSMakePoint(NSMidX(item), NSMidY(item))];
    return NSMakePoint(place.x, NSMaxY([[NSScreen mainScreen] frame]) - place.y);
}

@interface PlacePrinter : NSObject
@end

@implementation PlacePrinter

// Where the application's menu is, and Quit in it; a line each whenever they have moved.
- (void)printPlaces:(NSTimer*)timer
{
    (void)timer;
    static NSPoint lastQuit;
    NSMenu* menu = [[[NSApp mainMenu] itemAtIndex:0] submenu];
    const NSPoint opener = placeOf([NSApp mainMenu], 0);
    const NSPoint quit = placeOf(menu, [menu numberOfItems] - 1);
    if (!NSEqualPoints(quit, lastQuit)) {
        printf("menu at %.0f %.0f\nQuit at %.0f %.0f\n", opener.x, opener.y, quit.x, quit.y);
        lastQuit = quit;
    }
}

@end

// A timer, since nothing else runs while a menu is open.
static void keepPrintingPlaces(void)
{
    PlacePrinter* printer = [[[PlacePrinter alloc] init] autorelease];
    NSTimer* timer = [NSTimer timerWithTimeInterval:0.05
                                             target:printer
                                           selector:@selector(printPlaces:)
                                           userInfo:nil
                                            repeats:YES];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSDefaultRunLoopMode];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSEventTrackingRunLoopMode];
}

// As SDL's own video driver does on macOS, and its X11 driver does not.
static void handleCocoaEvents(void)
{
    NSDate* soon = [NSDate dateWithTimeIntervalSinceNow:0.02];
    NSEvent* event = nil;
    while ((event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                       untilDate:soon
                                          inMode:NSDefaultRunLoopMode
                                         dequeue:YES]) != nil) {
        [NSApp sendEvent:event];
    }
}

static int play(void)
{
    SDL_Init(SDL_INIT_VIDEO);
    SDL_SetVideoMode(300, 200, 0, SDL_OPENGL);
    keepPrintingPlaces();
    for (SDL_Event event = {0}; event.type != SDL_QUIT; SDL_PollEvent(&event)) {
        handleCocoaEvents();
    }
    puts("SDL_QUIT");
    SDL_Quit();
    return 0;
}

int SDL_main(int argc, char** argv)
{
    setvbuf(stdout, NULL, _IOLBF, 0);
    printArguments(argc, argv);
    printFolder();
    printLateDocument();
    printMenu([NSApp mainMenu]);
    return getenv("PROBE_WINDOW") == NULL ? 7 : play();
}
