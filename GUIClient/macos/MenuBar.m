#import "GUIClient/macos/MenuBar.h"

static NSString* applicationName(void)
{
    NSString* name = [[[NSBundle mainBundle] infoDictionary] objectForKey:@"CFBundleName"];
    return [name length] > 0 ? name : [[NSProcessInfo processInfo] processName];
}

// An empty key means no shortcut; any other is pressed with the command key. The responder chain finds the
// action's target.
static NSMenuItem* addItem(NSMenu* menu, NSString* title, SEL action, NSString* key)
{
    return [menu addItemWithTitle:title action:action keyEquivalent:key];
}

static NSMenu* addMenu(NSMenu* bar, NSString* title)
{
    NSMenu* menu = [[[NSMenu alloc] initWithTitle:title] autorelease];
    [bar setSubmenu:menu forItem:addItem(bar, title, NULL, @"")];
    return menu;
}

static void addApplicationMenu(NSMenu* bar, NSString* name)
{
    NSMenu* menu = addMenu(bar, name);
    addItem(menu, [@"About " stringByAppendingString:name], @selector(orderFrontStandardAboutPanel:), @"");
    [menu addItem:[NSMenuItem separatorItem]];
    addItem(menu, [@"Hide " stringByAppendingString:name], @selector(hide:), @"h");
    NSMenuItem* hideOthers = addItem(menu, @"Hide Others", @selector(hideOtherApplications:), @"h");
    [hideOthers setKeyEquivalentModifierMask:NSEventModifierFlagOption | NSEventModifierFlagCommand];
    addItem(menu, @"Show All", @selector(unhideAllApplications:), @"");
    [menu addItem:[NSMenuItem separatorItem]];
    addItem(menu, [@"Quit " stringByAppendingString:name], @selector(terminate:), @"q");
}

static NSMenu* addWindowMenu(NSMenu* bar)
{
    NSMenu* menu = addMenu(bar, @"Window");
    addItem(menu, @"Minimize", @selector(performMiniaturize:), @"m");
    return menu;
}

void installMenuBar(NSApplication* application)
{
    NSMenu* bar = [[[NSMenu alloc] initWithTitle:@""] autorelease];
    addApplicationMenu(bar, applicationName());
    NSMenu* windowMenu = addWindowMenu(bar);
    [application setMainMenu:bar];
    [application setWindowsMenu:windowMenu];
}
