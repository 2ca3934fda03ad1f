// A property that can be observed.
//
// An observer is called with the present value when it subscribes and again after every assignment,
// also one that changes nothing. It may assign, subscribe and drop subscriptions, its own too.
// Thread-safety: none; a property and its subscriptions belong to one thread. Ownership: the
// subscription owns the observer; either may outlive the other.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kestrivane {

/// Keeps an observer subscribed for as long as it lives.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::shared_ptr<const void> observer) : observer_(std::move(observer)) {}
  Subscription(Subscription&&) noexcept = default;
  Subscription& operator=(Subscription&&) noexcept = default;
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() = default;

 private:
  std::shared_ptr<const void> observer_;
};

template <typename T>
class Published {
 public:
  using Observer = std::function<void(const T& value)>;

  explicit Published(T value) : value_(std::move(value)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;
  ~Published() = default;

  const T& value() const { return value_; }

  void set(T value) {
    value_ = std::move(value);
    notify();
  }

  /// Hands the value to `change` to be changed in place; one notice.
  template <typename Change>
  void modify(Change change) {
    change(value_);
    notify();
  }

  Subscription subscribe(Observer observer) const {
    const auto shared = std::make_shared<const Observer>(std::move(observer));
    observers_.push_back(shared);
    (*shared)(value_);
    return Subscription(shared);
  }

 private:
  void notify() {
    std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
    const auto observers = observers_;  // a copy: observers may come and go meanwhile
    for (const auto& observer : observers) {
      if (const auto subscribed = observer.lock()) (*subscribed)(value_);
    }
  }

  T value_;
  mutable std::vector<std::weak_ptr<const Observer>> observers_;
};

}  // namespace kestrivane
