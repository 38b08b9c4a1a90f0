// A library of the machine's that the program runs without where it is missing.
#pragma once

namespace tolvane::hal {

/// The functions of a library, looked up by their names at run time. The library is never unloaded: what it
/// has started may run to the program's end. [not-io]
class SharedLibrary {
 public:
  /// Loads the library by the file name that its version bears ("libjack.so.0").
  explicit SharedLibrary(const char* fileName) noexcept;

  /// The function of that name, or null.
  template <class Function>
  [[nodiscard]] Function find(const char* name) noexcept {
    return reinterpret_cast<Function>(address(name));
  }

  /// Looks up one that must be there.
  template <class Function>
  void resolve(const char* name, Function& function) noexcept {
    function = find<Function>(name);
    isComplete_ = isComplete_ && function != nullptr;
  }

  /// The library was found, and with it every function that must be there.
  [[nodiscard]] bool isComplete() const noexcept { return isComplete_; }

 private:
  [[nodiscard]] void* address(const char* name) noexcept;

  void* handle_;
  bool isComplete_;
};

}  // namespace tolvane::hal
