# Shared build rules: warnings, sanitizers and the helpers every layer uses.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_compile_options(-Wall -Wextra -Werror)
# Artists' machines are x86-64 of the last fifteen years: SSSE3 and SSE4.2 are there, and the
# streams' byte-order swaps use SSSE3's byte shuffle. No FMA, so float results stay the same.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    include(CheckCXXCompilerFlag)
    check_cxx_compiler_flag(-march=x86-64-v2 EDITOR_HAS_X86_64_V2)
    if(EDITOR_HAS_X86_64_V2)
        add_compile_options(-march=x86-64-v2)
    endif()
endif()
# Assertion texts name source files relative to the repository, as the dumps and logs show them.
add_compile_options(-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)

if(EDITOR_SANITIZE STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
    add_compile_definitions(EDITOR_SANITIZED=1)
elseif(EDITOR_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
    add_compile_definitions(EDITOR_SANITIZED=1)
elseif(NOT EDITOR_SANITIZE STREQUAL "")
    message(FATAL_ERROR "EDITOR_SANITIZE must be empty, 'address' or 'thread'")
endif()

# Fuzz builds instrument every library for coverage; the targets add the libFuzzer driver.
if(EDITOR_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# ed_library(<target> SOURCES ... [DEPS ...])
# One static library per layer folder; the repository root is the include root, so
# headers are named by their layer: #include "Utils/Utility/GUtString.h".
function(ed_library target)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
    add_library(${target} STATIC ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR})
    if(ARG_DEPS)
        target_link_libraries(${target} PUBLIC ${ARG_DEPS})
    endif()
endfunction()

# ed_test(<name> SOURCES ... [DEPS ...] [THREADS])
# A GoogleTest binary build/bin/test_<name>, registered as one CTest test. THREADS marks
# suites that exercise threads: ./test also runs those under ThreadSanitizer.
function(ed_test name)
    if(NOT EDITOR_TESTS)
        return()
    endif()
    cmake_parse_arguments(ARG "THREADS" "" "SOURCES;DEPS" ${ARGN})
    add_executable(test_${name} ${ARG_SOURCES})
    target_link_libraries(test_${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gtest_main Threads::Threads)
    target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR})
    add_test(NAME ${name} COMMAND test_${name} WORKING_DIRECTORY ${CMAKE_BINARY_DIR})
    if(ARG_THREADS)
        set_tests_properties(${name} PROPERTIES LABELS threads)
    endif()
    set_property(GLOBAL APPEND PROPERTY EDITOR_TEST_TARGETS test_${name})
    if(ARG_THREADS)
        set_property(GLOBAL APPEND PROPERTY EDITOR_THREAD_TEST_TARGETS test_${name})
    endif()
endfunction()

# ed_bench(<name> SOURCES ... [DEPS ...]): build/bin/bench_<name>, run by bench/run.
function(ed_bench name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
    add_executable(bench_${name} ${ARG_SOURCES})
    target_link_libraries(bench_${name} PRIVATE ${ARG_DEPS} benchmark::benchmark Threads::Threads)
    target_include_directories(bench_${name} PRIVATE ${CMAKE_SOURCE_DIR})
    if(NOT TARGET all_bench)
        add_custom_target(all_bench)
    endif()
    add_dependencies(all_bench bench_${name})
endfunction()

# ed_fuzz(<name> SOURCES ... [DEPS ...]): build/bin/fuzz_<name>, a libFuzzer target.
function(ed_fuzz name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
    add_executable(fuzz_${name} ${ARG_SOURCES})
    target_compile_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(fuzz_${name} PRIVATE ${ARG_DEPS})
    target_include_directories(fuzz_${name} PRIVATE ${CMAKE_SOURCE_DIR})
endfunction()
