# Which sensor library the build picks, with made-up installations in a folder of the test's own.
#   cmake -D SENSOR=<path of Sensor.cmake> -D WORK=<folder> -D PKG_CONFIG=<program>
#         -D GENERATOR=<generator> -D MAKE_PROGRAM=<its program> -P <this file>

set(failures 0)

function(write_project)
  file(WRITE ${WORK}/project/CMakeLists.txt "
    cmake_minimum_required(VERSION 3.22)
    project(choice LANGUAGES NONE)
    set(CMAKE_FIND_LIBRARY_PREFIXES lib)
    set(CMAKE_FIND_LIBRARY_SUFFIXES .so)
    add_library(Threads::Threads INTERFACE IMPORTED)
    add_library(lumeno_virtual_kinect INTERFACE)
    get_cmake_property(before VARIABLES)
    include(${SENSOR})
    get_cmake_property(after VARIABLES)
    list(REMOVE_ITEM after \${before} before)
    foreach(variable IN LISTS after)
      get_property(cached CACHE \${variable} PROPERTY VALUE SET)
      if(NOT cached)
        message(STATUS \"Left behind: \${variable}\")
      endif()
    endforeach()
    if(NOT TARGET lumeno_sensor)
      message(FATAL_ERROR \"no sensor target\")
    endif()
    get_target_property(libraries lumeno_sensor INTERFACE_LINK_LIBRARIES)
    message(STATUS \"Linked: \${LUMENO_SENSOR} \${libraries}\")")
endfunction()

# An installation in ${WORK}/<name>: headers and library, without package files.
function(install_files name)
  set(threading "#define LIBFREENECT2_THREADING_STDLIB")
  if(ARGN STREQUAL "without_threading")
    set(threading "/* #undef LIBFREENECT2_THREADING_STDLIB */")
  endif()
  file(WRITE ${WORK}/${name}/lib/libfreenect2.so "")
  file(WRITE ${WORK}/${name}/include/libfreenect2/libfreenect2.hpp "")
  file(WRITE ${WORK}/${name}/include/libfreenect2/config.h "${threading}\n")
endfunction()

# A config package in ${WORK}/<name> that points to the installation <target>, as the library's own.
function(install_package name target)
  file(WRITE ${WORK}/${name}/lib/cmake/freenect2/freenect2Config.cmake "
    find_library(freenect2_LIBRARY freenect2 PATHS ${WORK}/${target}/lib NO_DEFAULT_PATH)
    set(freenect2_LIBRARIES \${freenect2_LIBRARY})
    find_path(freenect2_INCLUDE_DIR libfreenect2/libfreenect2.hpp
      PATHS ${WORK}/${target}/include NO_DEFAULT_PATH)
    set(freenect2_INCLUDE_DIRS \${freenect2_INCLUDE_DIR})")
endfunction()

# A pkg-config module in ${WORK}/<name> that points to the installation <target>.
function(install_module name target)
  file(WRITE ${WORK}/${name}/freenect2.pc
"Name: freenect2
Description: sensor library
Version: 0.2.0
Libs: -L${WORK}/${target}/lib -lfreenect2
Cflags: -I${WORK}/${target}/include
")
endfunction()

# check(<what> [AGAIN] PREFIX <installations> MODULES <folder> OPTIONS <cmake options>
#       EXPECT <texts> REJECT <texts>): configures and compares the output. AGAIN keeps the build
#       folder of the check before.
function(check what)
  cmake_parse_arguments(PARSE_ARGV 1 arg "AGAIN" "MODULES" "PREFIX;OPTIONS;EXPECT;REJECT")
  list(TRANSFORM arg_PREFIX PREPEND ${WORK}/)
  string(REPLACE ";" "\\;" prefix "${arg_PREFIX}")
  list(APPEND arg_REJECT "Left behind:")
  if(NOT arg_AGAIN)
    file(REMOVE_RECURSE ${WORK}/build)
  endif()
  # Nothing that is installed on this machine takes part.
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH= PKG_CONFIG_LIBDIR=${WORK}/${arg_MODULES}
      HOME=${WORK}/home
      ${CMAKE_COMMAND} -G ${GENERATOR} -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}
      -S ${WORK}/project -B ${WORK}/build -DCMAKE_PREFIX_PATH=${prefix}
      -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF -DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF
      -DCMAKE_FIND_USE_CMAKE_ENVIRONMENT_PATH=OFF -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
      -DPKG_CONFIG_EXECUTABLE=${PKG_CONFIG} ${arg_OPTIONS}
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  # A message is wrapped in lines of its own.
  string(REGEX REPLACE "[ \n]+" " " flat "${output}")
  set(good TRUE)
  if(NOT result EQUAL 0)
    set(good FALSE)
  endif()
  foreach(text IN LISTS arg_EXPECT)
    string(FIND "${flat}" "${text}" at)
    if(at EQUAL -1)
      message("${what}: \"${text}\" is missing")
      set(good FALSE)
    endif()
  endforeach()
  foreach(text IN LISTS arg_REJECT)
    string(FIND "${flat}" "${text}" at)
    if(NOT at EQUAL -1)
      message("${what}: \"${text}\" is there")
      set(good FALSE)
    endif()
  endforeach()
  if(good)
    message("PASS: ${what}")
  else()
    message("FAIL: ${what}, with this output:\n${output}")
    math(EXPR failures "${failures} + 1")
    set(failures ${failures} PARENT_SCOPE)
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
write_project()
install_files(whole)
install_files(old without_threading)
install_files(by_hand)
install_package(package whole)
install_package(package_of_nothing gone)
install_module(module whole)
install_module(module_of_nothing gone)

set(warning "waiting for a frame never times out")
set(rejection "names files that are not there")
check("nothing installed: the stand-in"
  EXPECT "Sensor library: the stand-in in virtual_kinect (libfreenect2 was not found)"
         "Linked: virtual_kinect"
  REJECT "${warning}" "${rejection}")
check("a config package"
  PREFIX package MODULES module
  EXPECT "${WORK}/whole/lib/libfreenect2.so (found by config package)"
         "Linked: libfreenect2 ${WORK}/whole/lib/libfreenect2.so"
  REJECT "${warning}")
check("a pkg-config module"
  MODULES module
  EXPECT "${WORK}/whole/lib/libfreenect2.so (found by pkg-config)"
         "Linked: libfreenect2 ${WORK}/whole/lib/libfreenect2.so"
  REJECT "${warning}")
check("files without a package"
  PREFIX by_hand
  EXPECT "${WORK}/by_hand/lib/libfreenect2.so (found by its files)"
         "Linked: libfreenect2 ${WORK}/by_hand/lib/libfreenect2.so"
  REJECT "${warning}")
check("a config package of a library that is not there is rejected"
  PREFIX package_of_nothing
  EXPECT "${rejection}" "the stand-in in virtual_kinect (libfreenect2 was not found)")
check("after a rejected config package comes pkg-config"
  PREFIX package_of_nothing by_hand MODULES module
  EXPECT "${rejection}" "(found by pkg-config)")
check("after a rejected module come the files"
  PREFIX package_of_nothing by_hand MODULES module_of_nothing
  EXPECT "${rejection}" "(found by its files)")
check("a wait that never times out is warned of"
  PREFIX old
  EXPECT "(found by its files)" "${warning}")
check("the stand-in on request"
  PREFIX package MODULES module OPTIONS -DLUMENO_USE_VIRTUAL_KINECT=ON
  EXPECT "Sensor library: the stand-in in virtual_kinect (as asked for)" "Linked: virtual_kinect")

install_files(home/freenect2)
install_package(home/freenect2 home/freenect2)
set(at_home "${WORK}/home/freenect2/lib/libfreenect2.so (found by config package)")
set(in_tree "${WORK}/project/.libfreenect2/lib/libfreenect2.so (found by config package)")
check("where the library's own guide installs it" EXPECT "${at_home}")
install_files(project/.libfreenect2)
install_package(project/.libfreenect2 project/.libfreenect2)
check("one that came since the last run is noticed" AGAIN EXPECT "${in_tree}")
check("the tree's own comes before the one in the home folder" EXPECT "${in_tree}")
check("what a person names comes before both"
  PREFIX package EXPECT "${WORK}/whole/lib/libfreenect2.so (found by config package)")
set(whole "${WORK}/whole/lib/libfreenect2.so (found by config package)")
check("a folder that a person set"
  OPTIONS -Dfreenect2_DIR=${WORK}/package/lib/cmake/freenect2 EXPECT "${whole}")
check("a folder that a person set stays in later runs" AGAIN EXPECT "${whole}")
file(REMOVE_RECURSE ${WORK}/project/.libfreenect2)
check("without the tree's own the one in the home folder again" EXPECT "${at_home}")
file(REMOVE_RECURSE ${WORK}/home)
check("one that went since the last run is noticed" AGAIN
  EXPECT "Sensor library: the stand-in in virtual_kinect (libfreenect2 was not found)")

if(failures)
  message(FATAL_ERROR "${failures} failed")
endif()
