# What every target of this tree shares: warnings, sanitizers, and reproducible arithmetic.

add_library(lumeno_options INTERFACE)
target_include_directories(lumeno_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
# Fused multiply-add would make conversions and gates depend on the processor.
target_compile_options(lumeno_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${LUMENO_WERROR}>:-Werror>
  -ffp-contract=off)
target_compile_definitions(lumeno_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS)
if(LUMENO_SANITIZE)
  target_compile_options(lumeno_options INTERFACE
    -fsanitize=${LUMENO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(lumeno_options INTERFACE -fsanitize=${LUMENO_SANITIZE})
endif()

# lumeno_library(<name> SOURCES <file>... [LIBRARIES <target>...] [PRIVATE_LIBRARIES <target>...])
#
# LIBRARIES are those whose names appear in its headers, PRIVATE_LIBRARIES those that only its sources
# use.
function(lumeno_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;PRIVATE_LIBRARIES")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name}
    PUBLIC lumeno_options ${arg_LIBRARIES} PRIVATE ${arg_PRIVATE_LIBRARIES})
endfunction()

# lumeno_tool(<name> SOURCES <file>... [LIBRARIES <target>...])
#
# A program beside the Control Center that a person starts by its name: built into the build's top
# folder like the Control Center, and installed into the folder of commands. Its logic lives in a
# library that tests can call; SOURCES is as a rule one short main.cpp. Every tool has a manual page
# written by hand, packaging/man/<name>.1.
function(lumeno_tool name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE lumeno_options ${arg_LIBRARIES})
  set_property(GLOBAL APPEND PROPERTY LUMENO_TOOLS ${name})
endfunction()

# lumeno_add_test(<name> LABELS <unit|gui|e2e|slow>... COMMAND <command>... [TIMEOUT <seconds>]
#                 [COST <seconds>] [ALONE])
#
# One ctest entry for a command; a command that is a target runs that target. Budgets by label: unit
# tests need no application object and no display and end within a second; gui tests run on the
# offscreen platform; e2e tests start the real program or a script; slow tests may take minutes.
# Those with the further label threads are the ones to run under the thread sanitizer.
#
# Tests run two at a time. ALONE is for those that measure how much the machine can do: nothing else
# runs beside them. COST is about how long a test takes; those with a high one start first, so that
# none of them is left over at the end.
#
# The second of a unit test is enforced in optimized builds, with room for a busy machine: a test
# fails that takes two seconds of processor time, or, since waiting costs none, a minute in all.
function(lumeno_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "ALONE" "TIMEOUT;COST" "LABELS;COMMAND")
  set(budget_ms 0)
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
    if("unit" IN_LIST arg_LABELS AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT LUMENO_SANITIZE)
      set(budget_ms 2000)
      set(arg_TIMEOUT 60)
    endif()
  endif()
  if(LUMENO_SANITIZE) # which makes a program several times slower
    math(EXPR arg_TIMEOUT "4 * ${arg_TIMEOUT}")
  endif()
  list(POP_FRONT arg_COMMAND program)
  if(TARGET ${program})
    set(program $<TARGET_FILE:${program}>)
  endif()
  add_test(NAME ${name}
    COMMAND ${PROJECT_SOURCE_DIR}/tests/support/run_test.sh ${budget_ms} ${program} ${arg_COMMAND})

  set(environment "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;QTEST_FUNCTION_TIMEOUT=${arg_TIMEOUT}000")
  if(LUMENO_SANITIZE MATCHES "address")
    # Freed memory is held back to find late uses of it; some tests watch the program's memory.
    string(APPEND environment ";ASAN_OPTIONS=quarantine_size_mb=16"
      ";LSAN_OPTIONS=print_suppressions=0:suppressions=${PROJECT_SOURCE_DIR}/tests/leaks.supp")
  endif()
  if(LUMENO_SANITIZE MATCHES "thread")
    string(APPEND environment
      ";TSAN_OPTIONS=ignore_noninstrumented_modules=1:suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
  endif()
  set_tests_properties(${name} PROPERTIES
    LABELS "${arg_LABELS}" TIMEOUT ${arg_TIMEOUT} SKIP_RETURN_CODE 77
    ENVIRONMENT "${environment}")
  if(arg_ALONE)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
  endif()
  if(arg_COST)
    set_tests_properties(${name} PROPERTIES COST ${arg_COST})
  endif()
endfunction()

# lumeno_test(<name> LABELS <label>... SOURCES <file>... [LIBRARIES <target>...] [TIMEOUT <seconds>]
#             [COST <seconds>] [ALONE])
#
# An executable that uses Qt Test, and its ctest entry; see lumeno_add_test.
function(lumeno_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "ALONE" "TIMEOUT;COST" "LABELS;SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE lumeno_options lumeno_test_support Qt6::Test ${arg_LIBRARIES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if("threads" IN_LIST arg_LABELS)
    add_dependencies(lumeno_threads_tests ${name})
  endif()
  # A keyword without its value is something that newer versions of CMake warn about.
  set(options LABELS ${arg_LABELS})
  foreach(keyword TIMEOUT COST)
    if(arg_${keyword})
      list(APPEND options ${keyword} ${arg_${keyword}})
    endif()
  endforeach()
  if(arg_ALONE)
    list(APPEND options ALONE)
  endif()
  lumeno_add_test(${name} ${options} COMMAND ${name})
endfunction()
