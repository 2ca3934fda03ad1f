#include "platform/qt/DroppedFiles.hpp"

#include <algorithm>

namespace kestrivane {
namespace {

/// Addresses one a line, with comments (RFC 2483).
constexpr auto listType = "text/uri-list";

constexpr QByteArrayView fileScheme = "file:";

bool hasFileScheme(const QByteArray& address) {
  return address.toLower().startsWith(fileScheme);
}

}  // namespace

std::optional<FileURL> fileAtAddress(const QByteArray& address) {
  if (!hasFileScheme(address)) return std::nullopt;
  QByteArray path = address.mid(fileScheme.size());
  // After "//" stands a host, empty as a rule.
  if (path.startsWith("//")) path = path.mid(std::max<qsizetype>(2, path.indexOf('/', 2)));
  if (!path.startsWith('/')) return std::nullopt;
  std::string file = QByteArray::fromPercentEncoding(path).toStdString();
  // The system would take the path to end there, and with it another file.
  if (file.find('\0') != std::string::npos) return std::nullopt;
  while (file.size() > 1 && file.ends_with('/'))
    file.pop_back();
  return FileURL(std::move(file));
}

QByteArray addressOf(const FileURL& file) {
  return "file://" + QByteArray::fromStdString(file.path()).toPercentEncoding("/");
}

bool offersFiles(const QMimeData& data) {
  const QList<QByteArray> lines = data.data(listType).split('\n');
  return std::ranges::any_of(lines, hasFileScheme);
}

std::optional<std::vector<FileURL>> filesIn(const QMimeData& data) {
  if (!data.hasFormat(listType)) return std::nullopt;
  std::vector<FileURL> files;
  for (const QByteArray& line : data.data(listType).split('\n'))
    if (auto file = fileAtAddress(line.trimmed())) files.push_back(*std::move(file));
  return files;
}

}  // namespace kestrivane
