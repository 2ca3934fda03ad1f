#include "app/Quitting.hpp"

#include <utility>

namespace kestrivane {

void Quitting::quit() {
  if (std::exchange(isQuitting_, true)) return services_.application.terminate();
  services_.popover.performClose();
  services_.viewModel.stopAllMonitoring();
  if (services_.tasks.empty()) return services_.application.terminate();
  services_.tasks.onEmpty = [this] { services_.application.terminate(); };
  folders_ = services_.viewModel.monitoredFolders().subscribe([this](const auto&) {
    // A folder is watched only after it has come into the list.
    services_.loop.post([this] { services_.viewModel.stopAllMonitoring(); });
  });
}

}  // namespace kestrivane
