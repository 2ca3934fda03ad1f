// The view model as QML sees it: the properties and operations that the views use, and nothing
// more.
//
// Thread-safety: main thread only. Ownership: shares the view model, owns the rows that it shows.
#pragma once

#include <QAbstractItemModel>
#include <QList>
#include <QObject>
#include <QUrl>
#include <functional>
#include <memory>

#include "state/AppViewModel.hpp"
#include "views/FolderListModel.hpp"

namespace kestrivane {

class ViewModelObject final : public QObject {
  Q_OBJECT
  /// A FolderListModel.
  Q_PROPERTY(QAbstractItemModel* monitoredFolders READ monitoredFolders CONSTANT)
  Q_PROPERTY(bool isProcessing READ isProcessing NOTIFY isProcessingChanged)
  Q_PROPERTY(bool showSuccessNotifications READ showSuccessNotifications WRITE
                 setShowSuccessNotifications NOTIFY showSuccessNotificationsChanged)
  /// The texts are Russian, or else English: a program keeps the language that it started with.
  Q_PROPERTY(bool isRussian READ isRussian CONSTANT)

 public:
  /// What the views ask for that is not the view model's.
  struct Actions {
    std::function<void()> checkForUpdates;
    std::function<void()> quit;
  };

  ViewModelObject(std::shared_ptr<AppViewModel> viewModel, Actions actions);

  QAbstractItemModel* monitoredFolders() { return &folders_; }
  bool isProcessing() const { return viewModel_->isProcessing().value(); }
  bool showSuccessNotifications() const { return viewModel_->showSuccessNotifications().value(); }
  void setShowSuccessNotifications(bool shows) { viewModel_->setShowSuccessNotifications(shows); }
  bool isRussian() const;

  /// Adds those of `urls` that are folders of this computer.
  Q_INVOKABLE void addFolders(const QList<QUrl>& urls);
  Q_INVOKABLE void selectFolders() { viewModel_->selectFolders(); }
  /// Nothing happens when there is no such row.
  Q_INVOKABLE void removeFolder(int row);
  Q_INVOKABLE void checkForUpdates() { actions_.checkForUpdates(); }
  Q_INVOKABLE void quit() { actions_.quit(); }

 signals:
  void isProcessingChanged();
  void showSuccessNotificationsChanged();

 private:
  std::shared_ptr<AppViewModel> viewModel_;
  Actions actions_;
  FolderListModel folders_;
  Subscription foldersSubscription_, processingSubscription_, notificationsSubscription_;
};

}  // namespace kestrivane
