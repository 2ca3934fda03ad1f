// How far a film reaches, counted from its packets: what a file says about its length is often
// wrong or missing.
//
// Thread-safety: blocks the calling thread; different films are independent. Ownership: none kept.
#pragma once

#include "platform/FileURL.hpp"

namespace kestrivane {

/// As `MediaInspector::isCutShort`. Silences the libraries, which would write to standard error.
bool isCutShort(const FileURL& result, const FileURL& source);

}  // namespace kestrivane
