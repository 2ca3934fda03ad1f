// The system's dialogue for choosing files and folders.
//
// Thread-safety: for the main thread. Ownership: none.
#pragma once

#include <string>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

enum class ModalResponse { cancel = 0, ok = 1 };

struct OpenPanelConfiguration {
  bool canChooseFiles = true;
  bool canChooseDirectories = false;
  bool allowsMultipleSelection = false;
  std::string prompt;  ///< the text of the confirming button; empty for the system's own
};

struct OpenPanelResult {
  ModalResponse response = ModalResponse::cancel;
  std::vector<FileURL> urls;  ///< what was chosen, in the panel's order
};

class OpenPanel {
 public:
  OpenPanel() = default;
  OpenPanel(const OpenPanel&) = delete;
  OpenPanel& operator=(const OpenPanel&) = delete;
  virtual ~OpenPanel() = default;

  /// Shows the dialogue and returns once the user has closed it. The main loop may run meanwhile.
  virtual OpenPanelResult runModal(const OpenPanelConfiguration& configuration) = 0;
};

}  // namespace kestrivane
