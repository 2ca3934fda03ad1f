#include "app/macos/SparkleUpdater.hpp"

#import <Sparkle/Sparkle.h>

namespace kestrivane {

struct SparkleUpdater::Native {
  SPUStandardUpdaterController* controller = nil;
};

SparkleUpdater::SparkleUpdater() : native_(std::make_unique<Native>()) {}

SparkleUpdater::~SparkleUpdater() = default;

void SparkleUpdater::start() {
  native_->controller = [[SPUStandardUpdaterController alloc] initWithStartingUpdater:YES
                                                                      updaterDelegate:nil
                                                                   userDriverDelegate:nil];
}

void SparkleUpdater::checkForUpdates() {
  [native_->controller checkForUpdates:nil];
}

}  // namespace kestrivane
