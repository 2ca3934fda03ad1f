// Damages the bytes of a file in ways that happen and in ways that do not: flips, cuts,
// repetitions.
//
// Thread-safety and ownership: none needed, a function of its arguments.
#pragma once

#include <cstdint>
#include <string>

namespace kestrivane::mutation {

/// `content` damaged one to four times; the same `seed` and `number` give the same damage.
std::string mutated(std::string content, std::uint64_t seed, std::uint64_t number);

}  // namespace kestrivane::mutation
