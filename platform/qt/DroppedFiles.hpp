// The files in what is dragged over a window, or handed over by another program.
//
// Names of files are bytes: they are taken from the addresses as they stand, not by way of a text
// encoding. Thread-safety: as `QMimeData`.
#pragma once

#include <QByteArray>
#include <QMimeData>
#include <optional>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

/// The file that a "file:" address (RFC 8089) names; nothing for any other address, nor for one
/// with a zero byte, which no name of a file has.
std::optional<FileURL> fileAtAddress(const QByteArray& address);

/// The "file:" address of the file.
QByteArray addressOf(const FileURL& file);

/// Whether one of the addresses in the content is that of a file.
bool offersFiles(const QMimeData& data);

/// The files in their order; nothing when the content is no list of addresses.
std::optional<std::vector<FileURL>> filesIn(const QMimeData& data);

}  // namespace kestrivane
