// A folder of the system on the same volume as a file that is to be replaced, where its replacement
// can be made ready.
//
// For Objective-C++ sources only. Thread-safety: none. Ownership: removes the folder with what is
// left in it, unless told to keep it.
#pragma once

#import <Foundation/Foundation.h>

#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {

class ItemReplacementDirectory {
 public:
  /// Throws `PlatformError` if there is none for the volume of `original`.
  static ItemReplacementDirectory create(NSURL* original) {
    NSError* error = nil;
    NSURL* const url = [NSFileManager.defaultManager URLForDirectory:NSItemReplacementDirectory
                                                            inDomain:NSUserDomainMask
                                                   appropriateForURL:original
                                                              create:YES
                                                               error:&error];
    if (url == nil) throw platformError(error);
    return ItemReplacementDirectory(url);
  }

  ItemReplacementDirectory(const ItemReplacementDirectory&) = delete;
  ItemReplacementDirectory& operator=(const ItemReplacementDirectory&) = delete;
  ~ItemReplacementDirectory() {
    if (!isKept_) [NSFileManager.defaultManager removeItemAtURL:url_ error:nil];
  }

  FileURL url() const { return fileURL(url_); }
  void keep() { isKept_ = true; }

 private:
  explicit ItemReplacementDirectory(NSURL* url) : url_(url) {}

  NSURL* const url_;
  bool isKept_ = false;
};

}  // namespace kestrivane
