# Flags for every target: the language, the warnings, the rounding rule, hardening and the sanitizers.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wconversion
  -Wsign-conversion -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough
  # Round every product and every sum separately: contraction to fused multiply-add would change the output.
  -ffp-contract=off)
if(TOLVANE_WERROR)
  add_compile_options(-Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wduplicated-cond -Wlogical-op)
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 wrongly reports an overlap in its own library's string concatenation (GCC bug 105651).
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
    # At -O3 it takes the strings of variants in initializer lists for uninitialized. GCC 14 and clang do not.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-maybe-uninitialized>)
  endif()
endif()

if(TOLVANE_DEBUG_CHECKS)
  add_compile_definitions(TOLVANE_DEBUG_CHECKS=1)
  # The C++ library's own assertions.
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
  # No path of the machine that builds gets into the programs, so that the same sources give the same programs.
  add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
endif()

if(TOLVANE_HARDENING)
  include(CheckPIESupported)
  check_pie_supported()
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|i.86")
    add_compile_options(-fstack-clash-protection -fcf-protection)
  endif()
  if(NOT APPLE)
    add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  endif()
endif()

if(TOLVANE_SANITIZE)
  add_compile_options(-fsanitize=${TOLVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TOLVANE_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC's flow warnings analyse the branches that the sanitizers add, and report faults that the source does
    # not have.
    add_compile_options(-Wno-maybe-uninitialized -Wno-stringop-overflow)
  endif()
endif()

if(TOLVANE_FRAMEWORK_STANDIN)
  # Nothing can be linked, since the frameworks are absent: CMake's own checks must only compile.
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-stdlib=libc++>)
  include_directories(SYSTEM ${CMAKE_CURRENT_SOURCE_DIR}/tests/framework_standin)
endif()
