// A library of the system that the program can run without.
#pragma once

namespace tolvane::hal {

/// The functions of a library, looked up by name at run time. The library is never unloaded: whatever it has
/// started may run until the program ends. [not-io]
class SharedLibrary {
 public:
  /// Loads the library by its versioned file name ("libjack.so.0").
  explicit SharedLibrary(const char* fileName) noexcept;

  /// The function of this name, or null.
  template <class Function>
  [[nodiscard]] Function find(const char* name) noexcept {
    return reinterpret_cast<Function>(address(name));
  }

  /// Looks up a required function.
  template <class Function>
  void resolve(const char* name, Function& function) noexcept {
    function = find<Function>(name);
    isComplete_ = isComplete_ && function != nullptr;
  }

  /// True if the library was found.
  [[nodiscard]] bool isThere() const noexcept { return handle_ != nullptr; }

  /// True if the library and every required function were found.
  [[nodiscard]] bool isComplete() const noexcept { return isComplete_; }

 private:
  [[nodiscard]] void* address(const char* name) noexcept;

  void* handle_;
  bool isComplete_;
};

}  // namespace tolvane::hal
