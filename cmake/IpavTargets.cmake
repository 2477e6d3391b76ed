# The shapes that targets of this project share.

include(GNUInstallDirs)

# The build tree mirrors the install tree, so that one relative rpath and one way to find the plug-in and the YANG
# modules serve both. A build rpath of its own would be padded with empty entries to the length of the installed one,
# and an empty entry is the current folder: ipvald would run what lies in the folder that it is called from.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(IPAV_YANG_RELATIVE_DIR share/ipvald/yang)

# ipav_target(<target>): language level, warnings, sanitizers and rpath of every target of this project.
function(ipav_target target)
  target_compile_features(${target} PUBLIC cxx_std_20 c_std_11)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    C_EXTENSIONS ON
    POSITION_INDEPENDENT_CODE ON
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN;$ORIGIN/../lib")
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(IPAV_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(IPAV_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${IPAV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${IPAV_SANITIZE})
  endif()
  if(IPAV_BUILD_FUZZERS)
    # Counters that libFuzzer steers by. In a program without libFuzzer the address sanitizer takes them and does nothing.
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(IPAV_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# ipav_add_test(<name> SOURCES <source>... [LIBRARIES <target>...] [LABELS <label>...]) A GoogleTest program of that
# name, run by CTest as one test. It writes its results as XML for script/test to count, and finds what tests share as
# "support/<name>.h". The target <label>_tests builds all programs of one label.
function(ipav_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;LABELS")
  add_executable(${name} ${arg_SOURCES})
  ipav_target(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gmock_main)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  # What a library loads or starts has to be built before whoever links it runs, which CMake does not see to.
  foreach(library IN LISTS arg_LIBRARIES)
    if(TARGET ${library})
      get_target_property(needed ${library} MANUALLY_ADDED_DEPENDENCIES)
      if(needed)
        add_dependencies(${name} ${needed})
      endif()
    endif()
  endforeach()
  target_compile_definitions(${name} PRIVATE
    IPAV_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    IPAV_BINARY_DIR="${PROJECT_BINARY_DIR}"
    IPAV_SANITIZE="${IPAV_SANITIZE}")
  add_test(NAME ${name} COMMAND ${name})
  if(IPAV_PRECOMPILE)
    target_precompile_headers(${name} REUSE_FROM precompiled_headers)
    target_compile_options(${name} PRIVATE -fpch-preprocess)  # ccache asks for it
  endif()
  foreach(label IN LISTS arg_LABELS)
    if(NOT TARGET ${label}_tests)
      add_custom_target(${label}_tests)
    endif()
    add_dependencies(${label}_tests ${name})
  endforeach()
  set_tests_properties(${name} PROPERTIES
    LABELS "${arg_LABELS}"
    TIMEOUT 300
    ENVIRONMENT "GTEST_OUTPUT=xml:${PROJECT_BINARY_DIR}/test-results/${name}.xml")
endfunction()
