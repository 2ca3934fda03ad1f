// The owner of an object of a C library, which is released by a function of one argument.
//
// Thread-safety: none. Ownership: releases what it holds.
#pragma once

#include <memory>

namespace kestrivane {

template <auto release>
struct ReleasedBy {
  template <typename Object>
  void operator()(Object* object) const {
    release(object);
  }
};

template <typename Object, auto release>
using LibraryHandle = std::unique_ptr<Object, ReleasedBy<release>>;

}  // namespace kestrivane
