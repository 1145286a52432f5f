# Picks the library that the acquisition worker is linked with: libfreenect2 where it is installed,
# else, or on request, the stand-in of this tree. The result is the target lumeno_sensor and the
# cache variable LUMENO_SENSOR, "libfreenect2" or "virtual_kinect", which scripts read too.
#
# Searched in this order: what CMAKE_PREFIX_PATH names, the prefix .libfreenect2 of this tree, where
# scripts/setup-kinect.sh puts the library, $HOME/freenect2, where the library's own guide does, and
# the system.

option(LUMENO_USE_VIRTUAL_KINECT "Use the sensor stand-in although libfreenect2 is installed" OFF)

# A place is usable when its library files and its main header are there: packages and module files
# report success with paths that were never found, or that went away since.
function(_lumeno_sensor_usable result libraries include_dirs)
  set(${result} FALSE PARENT_SCOPE)
  if(NOT libraries)
    return()
  endif()
  foreach(library IN LISTS libraries)
    if(library MATCHES "NOTFOUND$" OR (IS_ABSOLUTE "${library}" AND NOT EXISTS "${library}"))
      return()
    endif()
  endforeach()
  foreach(folder IN LISTS include_dirs)
    if(EXISTS "${folder}/libfreenect2/libfreenect2.hpp")
      set(${result} TRUE PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

# Forgets what an earlier run found, so that a library that came or went since is noticed. What a
# person set stays.
function(_lumeno_forget_earlier_search)
  if(DEFINED LUMENO_FOUND_FREENECT2_DIR AND freenect2_DIR STREQUAL LUMENO_FOUND_FREENECT2_DIR)
    unset(freenect2_DIR CACHE)
    unset(freenect2_LIBRARY CACHE) # these two are set by the library's config package
    unset(freenect2_INCLUDE_DIR CACHE)
  endif()
  unset(LUMENO_FREENECT2_LIBRARY CACHE)
  unset(LUMENO_FREENECT2_INCLUDE_DIR CACHE)
endfunction()

# Sets how, libraries and include_dirs in the caller; how is empty when libfreenect2 was not found.
function(_lumeno_find_libfreenect2)
  list(APPEND CMAKE_PREFIX_PATH ${PROJECT_SOURCE_DIR}/.libfreenect2 $ENV{HOME}/freenect2)
  _lumeno_forget_earlier_search()
  set(how "")
  set(given "${freenect2_DIR}")
  find_package(freenect2 CONFIG QUIET)
  if(freenect2_FOUND)
    if(NOT freenect2_DIR STREQUAL given)
      set(LUMENO_FOUND_FREENECT2_DIR "${freenect2_DIR}" CACHE INTERNAL "Found by the last search")
    endif()
    set(libraries ${freenect2_LIBRARIES})
    set(include_dirs ${freenect2_INCLUDE_DIRS})
    _lumeno_sensor_usable(usable "${libraries}" "${include_dirs}")
    if(usable)
      set(how "config package")
    else()
      message(STATUS "The config package in ${freenect2_DIR} names files that are not there")
    endif()
  endif()

  find_package(PkgConfig QUIET)
  if(NOT how AND PKG_CONFIG_FOUND)
    pkg_check_modules(LUMENO_FREENECT2 QUIET freenect2)
    # pkg-config leaves out folders that the compiler searches anyway.
    set(libraries ${LUMENO_FREENECT2_LINK_LIBRARIES})
    set(include_dirs ${LUMENO_FREENECT2_INCLUDE_DIRS} ${LUMENO_FREENECT2_INCLUDEDIR})
    _lumeno_sensor_usable(usable "${libraries}" "${include_dirs}")
    if(usable)
      set(how "pkg-config")
    endif()
  endif()

  if(NOT how)
    find_library(LUMENO_FREENECT2_LIBRARY freenect2)
    find_path(LUMENO_FREENECT2_INCLUDE_DIR libfreenect2/libfreenect2.hpp)
    mark_as_advanced(LUMENO_FREENECT2_LIBRARY LUMENO_FREENECT2_INCLUDE_DIR)
    set(libraries ${LUMENO_FREENECT2_LIBRARY})
    set(include_dirs ${LUMENO_FREENECT2_INCLUDE_DIR})
    _lumeno_sensor_usable(usable "${libraries}" "${include_dirs}")
    if(usable)
      set(how "its files")
    endif()
  endif()
  set(how "${how}" PARENT_SCOPE)
  set(libraries "${libraries}" PARENT_SCOPE)
  set(include_dirs "${include_dirs}" PARENT_SCOPE)
endfunction()

# A timed wait of the listener only ends in time where the library uses standard C++ threads.
function(_lumeno_warn_about_endless_wait include_dirs)
  find_file(header libfreenect2/config.h PATHS ${include_dirs} NO_DEFAULT_PATH NO_CACHE)
  set(threading "")
  if(header)
    file(STRINGS "${header}" threading REGEX "^#define +LIBFREENECT2_THREADING_STDLIB")
  endif()
  if(NOT threading)
    message(WARNING
      "This libfreenect2 was built without C++11 threading: waiting for a frame never times out, so "
      "that a silent sensor goes unnoticed and holds up the end of the program. Build libfreenect2 "
      "with -DENABLE_CXX11=ON.")
  endif()
endfunction()

# Makes lumeno_sensor. A function, so that it leaves no variables behind in the caller.
function(_lumeno_choose_sensor)
  set(reason "as asked for")
  set(how "")
  if(NOT LUMENO_USE_VIRTUAL_KINECT)
    set(reason "libfreenect2 was not found")
    _lumeno_find_libfreenect2()
  endif()
  if(how)
    set(LUMENO_SENSOR libfreenect2 CACHE INTERNAL "The sensor library in use")
    add_library(lumeno_libfreenect2 INTERFACE IMPORTED)
    target_link_libraries(lumeno_libfreenect2 INTERFACE ${libraries} Threads::Threads)
    target_include_directories(lumeno_libfreenect2 INTERFACE ${include_dirs})
    add_library(lumeno_sensor ALIAS lumeno_libfreenect2)
    list(GET libraries 0 library)
    message(STATUS "Sensor library: libfreenect2, ${library} (found by ${how})")
    _lumeno_warn_about_endless_wait("${include_dirs}")
  else()
    set(LUMENO_SENSOR virtual_kinect CACHE INTERNAL "The sensor library in use")
    add_library(lumeno_sensor ALIAS lumeno_virtual_kinect)
    message(STATUS "Sensor library: the stand-in in virtual_kinect (${reason})")
  endif()
endfunction()
_lumeno_choose_sensor()

# lumeno_sensor_library(<name> SOURCES <file>... [LIBRARIES <target>...]
#                       [SENSOR_LIBRARIES <sensor library>...])
#
# Two libraries of the same sources: <name> is linked with the chosen sensor library and belongs into
# the program, <name>_virtual is linked with the stand-in and belongs into tests. What uses them
# leaves the choice to the executable, so that none ever links both. SENSOR_LIBRARIES are further
# libraries made by this function, without the suffix.
function(lumeno_sensor_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;SENSOR_LIBRARIES")
  lumeno_library(${name} SOURCES ${arg_SOURCES} LIBRARIES ${arg_LIBRARIES} ${arg_SENSOR_LIBRARIES})
  target_link_libraries(${name} PRIVATE lumeno_sensor)
  if(LUMENO_SENSOR STREQUAL "virtual_kinect")
    add_library(${name}_virtual ALIAS ${name})
  else()
    list(TRANSFORM arg_SENSOR_LIBRARIES APPEND _virtual)
    lumeno_library(${name}_virtual
      SOURCES ${arg_SOURCES} LIBRARIES ${arg_LIBRARIES} ${arg_SENSOR_LIBRARIES})
    target_link_libraries(${name}_virtual PRIVATE lumeno_virtual_kinect)
  endif()
endfunction()
