# The two kinds of target of this project: a static library per folder, and a test program.

add_library(quillet_options INTERFACE)
target_compile_options(quillet_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wconversion
  -Wno-sign-conversion -Wimplicit-fallthrough)
if(QUILLET_WARNINGS_AS_ERRORS)
  target_compile_options(quillet_options INTERFACE -Werror)
endif()
if(QUILLET_SANITIZE)
  target_compile_options(quillet_options INTERFACE -fsanitize=${QUILLET_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(quillet_options INTERFACE -fsanitize=${QUILLET_SANITIZE})
endif()
target_compile_definitions(quillet_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)
if(QUILLET_REALTIME_GUARD)
  # For every source file alike: RealtimeScope is not the same class with and without it.
  target_compile_definitions(quillet_options INTERFACE QUILLET_REALTIME_GUARD)
endif()

# quillet_library(name [QT] HEADERS ... [SOURCES ...] [PUBLIC libs...] [PRIVATE libs...])
# Without SOURCES the library is header-only. Headers are included by their path from the project's root, and each must
# compile alone (target all_verify_interface_header_sets).
function(quillet_library name)
  cmake_parse_arguments(LIB "QT" "" "HEADERS;SOURCES;PUBLIC;PRIVATE" ${ARGN})
  if(LIB_SOURCES)
    add_library(${name} STATIC ${LIB_SOURCES})
    set(scope PUBLIC)
    target_link_libraries(${name} PRIVATE quillet_options ${LIB_PRIVATE})
  else()
    add_library(${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_sources(${name} ${scope} FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${LIB_HEADERS})
  target_include_directories(${name} ${scope} "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} ${scope} ${LIB_PUBLIC})
  set_target_properties(${name} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
  if(LIB_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
  endif()
endfunction()

# For every program that the tests run: what the thread sanitizer's runtime lacks, in its preset.
function(quillet_sanitizer_gaps name)
  if(QUILLET_SANITIZE MATCHES "thread")
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:quillet_thread_sanitizer_gaps>)
  endif()
endfunction()

# quillet_test(name [QT] [TIMEOUT s] [LABELS ...] SOURCES ... LIBRARIES ...)
# One GoogleTest program; each of its cases becomes a test of its own.
function(quillet_test name)
  cmake_parse_arguments(TEST "QT" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;PROPERTIES" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE quillet_options ${TEST_LIBRARIES} GTest::gmock GTest::gtest_main)
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  if(TEST_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
  endif()
  if(QUILLET_REALTIME_GUARD)
    # As sources, since a linker may leave a library's interposers out; symbols exported for readable stack traces.
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:quillet_realtime_guard>)
    set_target_properties(${name} PROPERTIES ENABLE_EXPORTS ON)
  endif()
  quillet_sanitizer_gaps(${name})
  if("audio" IN_LIST TEST_LABELS)
    add_dependencies(quillet_label_audio ${name})
  endif()
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 120)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}" ${TEST_PROPERTIES})
endfunction()
