// A dialogue that answers at once. Thread-safety: none; used on the test's thread. Ownership: owns
// its answer and its records.
#pragma once

#include <vector>

#include "platform/OpenPanel.hpp"

namespace kestrivane::test {

class FakeOpenPanel final : public OpenPanel {
 public:
  OpenPanelResult answer;
  std::vector<OpenPanelConfiguration> configurations;  ///< of the dialogues shown so far

  OpenPanelResult runModal(const OpenPanelConfiguration& configuration) override {
    configurations.push_back(configuration);
    return answer;
  }
};

}  // namespace kestrivane::test
