// Bytes that only their maker understands. Thread-safety and ownership: a value.
#pragma once

#include <cstddef>
#include <vector>

namespace kestrivane {

using Data = std::vector<std::byte>;

}  // namespace kestrivane
