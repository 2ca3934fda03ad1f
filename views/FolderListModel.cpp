#include "views/FolderListModel.hpp"

#include <QUrl>
#include <algorithm>

#include "platform/qt/DroppedFiles.hpp"

namespace kestrivane {

void FolderListModel::setFolders(const std::vector<FileURL>& folders) {
  for (int row = rowCount() - 1; row >= 0; --row) {
    if (std::ranges::find(folders, folders_[static_cast<std::size_t>(row)]) != folders.end())
      continue;
    beginRemoveRows({}, row, row);
    folders_.erase(folders_.begin() + row);
    endRemoveRows();
  }
  // From here on every row before `target` is as it should be.
  for (int target = 0; target < static_cast<int>(folders.size()); ++target) {
    const FileURL& folder = folders[static_cast<std::size_t>(target)];
    const auto place = folders_.begin() + target;
    const auto current = std::find(place, folders_.end(), folder);
    if (current == place && current != folders_.end()) continue;
    if (current == folders_.end()) {
      beginInsertRows({}, target, target);
      folders_.insert(place, folder);
      endInsertRows();
    } else {
      const int source = static_cast<int>(current - folders_.begin());
      beginMoveRows({}, source, source, {}, target);
      std::rotate(place, current, current + 1);
      endMoveRows();
    }
  }
}

int FolderListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(folders_.size());
}

QVariant FolderListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const FileURL& folder = folders_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case url:
      return QUrl::fromEncoded(addressOf(folder));
    case name:
      return QString::fromStdString(folder.lastPathComponent());
    case parentPath:
      return QString::fromStdString(folder.deletingLastPathComponent().path());
    default:
      return {};
  }
}

QHash<int, QByteArray> FolderListModel::roleNames() const {
  return {{url, "url"}, {name, "name"}, {parentPath, "parentPath"}};
}

}  // namespace kestrivane
