// The watched folders as rows for a list view. A new list is compared with the old one, so that
// only the rows that came, went or moved are announced and the view can animate just these.
//
// Thread-safety: main thread only. Ownership: owns its URLs.
#pragma once

#include <QAbstractListModel>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

class FolderListModel final : public QAbstractListModel {
  Q_OBJECT

 public:
  /// The roles, named in QML as here. `url` is a QUrl, the others are QStrings: the last component
  /// of the path, and the path of the folder that it is in. Bytes that are no text are shown as
  /// replacement characters.
  enum Role { url = Qt::UserRole, name, parentPath };

  using QAbstractListModel::QAbstractListModel;

  /// Without duplicates.
  void setFolders(const std::vector<FileURL>& folders);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  std::vector<FileURL> folders_;
};

}  // namespace kestrivane
