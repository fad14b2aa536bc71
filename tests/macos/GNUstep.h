// GNUstep's Cocoa, and the newer names that the start-up code uses and GNUstep lacks.
#pragma once

#import <Cocoa/Cocoa.h>

#define NSEventModifierFlagOption NSAlternateKeyMask
#define NSEventModifierFlagCommand NSCommandKeyMask

@interface NSApplication (ActivationPolicy)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end
