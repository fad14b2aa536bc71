#pragma once

#import <Cocoa/Cocoa.h>

/// The application's menu bar: the menu named after the application, and "Window".
///
/// The name is the bundle's "CFBundleName", or else the process's. Quit sends the application `terminate:`.
void installMenuBar(NSApplication* application);
