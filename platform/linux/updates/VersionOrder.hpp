// Which of two versions of the program is the newer one.
//
// Thread-safety: a pure function.
#pragma once

#include <compare>
#include <string_view>

namespace kestrivane {

/// Compares versions part by part: "1.10" is newer than "1.9", "2.0" than "2.0-rc1" and "2.0b", and
/// "1.0" is as new as "1.0.0". A part is a run of digits (compared as numbers of any length) or of
/// letters (compared by byte); what stands between parts only separates them. Where one version has
/// a part that the other lacks, letters make it older, a number other than 0 makes it newer.
std::weak_ordering compareVersions(std::string_view left, std::string_view right);

}  // namespace kestrivane
