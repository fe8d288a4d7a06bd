#pragma once

namespace ormel::detail {

class WaitRegistry;

/// A wait that can be listed in a registry; its destructor removes it.
class WaitRecord {
 public:
  explicit WaitRecord(const char* name) noexcept : name_(name) {}
  WaitRecord(const WaitRecord&) = delete;
  WaitRecord& operator=(const WaitRecord&) = delete;
  ~WaitRecord() { leave(); }

  void leave() noexcept {
    if (registry_) unlink();
  }
  const char* name() const noexcept { return name_; }

 private:
  friend class WaitRegistry;
  void unlink() noexcept;

  const char* name_;
  WaitRegistry* registry_ = nullptr;
  WaitRecord* previous_ = nullptr;
  WaitRecord* next_ = nullptr;
};

/// The waits that have begun and not ended on a scheduler of one thread, in the order in which they began.
class WaitRegistry {
 public:
  WaitRegistry() noexcept = default;
  WaitRegistry(const WaitRegistry&) = delete;
  WaitRegistry& operator=(const WaitRegistry&) = delete;
  ~WaitRegistry();

  void add(WaitRecord& record) noexcept;

  template <typename Visit>
  void forEach(Visit visit) const {
    for (const WaitRecord* record = first_; record; record = record->next_) visit(record->name());
  }

 private:
  friend class WaitRecord;

  WaitRecord* first_ = nullptr;
  WaitRecord* last_ = nullptr;
};

}  // namespace ormel::detail
