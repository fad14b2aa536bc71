// GNUstep's Cocoa, and the newer names that the start-up code uses and GNUstep lacks.
#pragma once

#include_next <Cocoa/Cocoa.h>

enum
{
    NSEventModifierFlagOption = NSAlternateKeyMask,
    NSEventModifierFlagCommand = NSCommandKeyMask
};

@interface NSApplication (ActivationPolicy)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end
