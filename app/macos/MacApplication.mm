#include "app/macos/MacApplication.hpp"

#import <AppKit/AppKit.h>

namespace kestrivane {

void MacApplication::setActivationPolicy(ActivationPolicy policy) {
  [NSApplication.sharedApplication setActivationPolicy:policy == ActivationPolicy::accessory
                                                           ? NSApplicationActivationPolicyAccessory
                                                           : NSApplicationActivationPolicyRegular];
}

void MacApplication::terminate() {
  [NSApplication.sharedApplication terminate:nil];
}

}  // namespace kestrivane
