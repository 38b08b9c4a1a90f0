include_guard(DIRECTORY)
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Test)

if(NOT TARGET qt_test_precompiled)
  add_executable(qt_test_precompiled EXCLUDE_FROM_ALL ${CMAKE_SOURCE_DIR}/tests/support/precompiled_main.cpp)
  target_compile_options(qt_test_precompiled PRIVATE ${TOLVANE_TEST_FLAGS})
  target_link_libraries(qt_test_precompiled PRIVATE Qt6::Widgets GTest::gmock)
  target_precompile_headers(qt_test_precompiled PRIVATE
    <gmock/gmock.h> <gtest/gtest.h> <QImage> <QPainter> <QWidget>)
endif()

# tolvane_qt_test(<name> SOURCES ... LINK ... [SCALES ...] [PLATFORM platform] [TIMEOUT s]): adds a Qt test
# program. It runs once for each display scale (default 1), on the Qt platform given (default offscreen). The
# timeout is in seconds, 120 by default. At a scale other than 1, the names of the test cases start with
# "scale 2/" or the like.
function(tolvane_qt_test name)
  cmake_parse_arguments(TEST "" "PLATFORM;TIMEOUT" "SOURCES;LINK;SCALES" ${ARGN})
  if(NOT TEST_SCALES)
    set(TEST_SCALES 1)
  endif()
  if(NOT TEST_PLATFORM)
    set(TEST_PLATFORM offscreen)
  endif()
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 120)
  endif()
  add_executable(${name} ${TEST_SOURCES} ${CMAKE_SOURCE_DIR}/tests/support/qt_main.cpp)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${TEST_LINK} tolvane_test_process Qt6::Widgets Qt6::Test GTest::gmock)
  tolvane_test_options(${name} qt_test_precompiled)
  foreach(scale IN LISTS TEST_SCALES)
    set(prefix "")
    if(NOT scale EQUAL 1)
      set(prefix "scale ${scale}/")
    endif()
    # Two properties for two variables: gtest_discover_tests does not keep a list together.
    set(properties TIMEOUT ${TEST_TIMEOUT} ENVIRONMENT QT_QPA_PLATFORM=${TEST_PLATFORM}
        ENVIRONMENT_MODIFICATION QT_SCALE_FACTOR=set:${scale})
    gtest_discover_tests(${name} TEST_PREFIX ${prefix} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
  endforeach()
endfunction()
