#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacOpenPanel.hpp"

#import <AppKit/AppKit.h>

#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {

OpenPanelResult MacOpenPanel::runModal(const OpenPanelConfiguration& configuration) {
  @autoreleasepool {
    NSOpenPanel* const panel = [NSOpenPanel openPanel];
    panel.canChooseFiles = configuration.canChooseFiles;
    panel.canChooseDirectories = configuration.canChooseDirectories;
    panel.allowsMultipleSelection = configuration.allowsMultipleSelection;
    if (!configuration.prompt.empty()) panel.prompt = nsString(configuration.prompt);

    OpenPanelResult result;
    if ([panel runModal] != NSModalResponseOK) return result;
    result.response = ModalResponse::ok;
    for (NSURL* url in panel.URLs)
      result.urls.push_back(fileURL(url));
    return result;
  }
}

}  // namespace kestrivane
