# What is installed, and where: the program out of the folder of commands, since it is started
# through its launcher, and everything that a desktop, the manual, udev and systemd look for.
include(GNUInstallDirs)

option(LUMENO_BUNDLE_SENSOR "Install a libfreenect2 that is not the distribution's along" OFF)
set(LUMENO_UDEV_RULES_DIR lib/udev/rules.d CACHE STRING "Folder of udev rules, below the prefix")
set(LUMENO_SYSTEMD_USER_DIR lib/systemd/user CACHE STRING "Folder of user units, below the prefix")
# The metainfo must name a homepage, and screenshots on the web. Names below "example" are reserved:
# until there is a page, the address leads nowhere, and never to a stranger.
set(LUMENO_HOMEPAGE "https://lumeno.velmor.example"
  CACHE STRING "Where the project is published, with docs/images as its folder images")
mark_as_advanced(LUMENO_UDEV_RULES_DIR LUMENO_SYSTEMD_USER_DIR)

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(generated ${PROJECT_BINARY_DIR}/packaging)
get_property(tools GLOBAL PROPERTY LUMENO_TOOLS)

# lumeno_install_compressed(<input> <name> <folder>): with the project's variables filled in, as
# <name>.gz; distributions want manual pages and change logs so.
function(lumeno_install_compressed input name folder)
  configure_file(${input} ${generated}/${name} @ONLY)
  execute_process(COMMAND gzip -9nkf ${generated}/${name} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${generated}/${name}.gz DESTINATION ${folder})
endfunction()

# lumeno_changelog(<result> <form> [<awk variable>...]): the change log in another form.
function(lumeno_changelog result form)
  execute_process(
    COMMAND awk -v form=${form} ${ARGN} -f ${packaging}/changelog.awk
      ${PROJECT_SOURCE_DIR}/CHANGELOG.md
    OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(FIND "${text}" "${PROJECT_VERSION}" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "CHANGELOG.md has no heading \"## ${PROJECT_VERSION} - YYYY-MM-DD\"")
  endif()
  set(${result} "${text}" PARENT_SCOPE)
endfunction()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${packaging}/changelog.awk)

# Programs.
set(libexec ${CMAKE_INSTALL_LIBEXECDIR}/lumeno-control-center)
install(TARGETS lumeno-control-center RUNTIME DESTINATION ${libexec})
if(tools)
  install(TARGETS ${tools} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
file(RELATIVE_PATH LUMENO_LIBEXEC_FROM_BIN
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${libexec})
configure_file(${packaging}/launcher.sh.in ${generated}/lumeno-control-center @ONLY)
install(PROGRAMS ${generated}/lumeno-control-center DESTINATION ${CMAKE_INSTALL_BINDIR})

# The sensor's library, where nothing else would bring it.
set(LUMENO_SENSOR_SENTENCE
  "a stand-in with a virtual room; no sensor can be opened.")
if(LUMENO_SENSOR STREQUAL "libfreenect2")
  set(LUMENO_SENSOR_SENTENCE "the system's libfreenect2.")
  if(LUMENO_BUNDLE_SENSOR)
    include(BundleSensor)
  endif()
endif()

# Desktop.
install(FILES ${packaging}/lumeno-control-center.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${packaging}/icons/lumeno-control-center.svg DESTINATION ${icons}/scalable/apps)
foreach(size 48 128 256)
  install(FILES ${packaging}/icons/lumeno-control-center-${size}.png
    DESTINATION ${icons}/${size}x${size}/apps RENAME lumeno-control-center.png)
endforeach()
lumeno_changelog(LUMENO_RELEASES metainfo)
set(LUMENO_PROVIDED_BINARIES "")
foreach(command lumeno-control-center ${tools})
  list(APPEND LUMENO_PROVIDED_BINARIES "    <binary>${command}</binary>")
endforeach()
list(JOIN LUMENO_PROVIDED_BINARIES "\n" LUMENO_PROVIDED_BINARIES)
set(metainfo org.velmor.lumeno_control_center.metainfo.xml)
configure_file(${packaging}/${metainfo}.in ${generated}/${metainfo} @ONLY)
install(FILES ${generated}/${metainfo} DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

# Manual pages.
foreach(command lumeno-control-center ${tools})
  lumeno_install_compressed(${packaging}/man/${command}.1 ${command}.1
    ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()

# System: the right to open the sensor, and a service that a person may enable.
install(FILES ${packaging}/70-kinect-v2.rules DESTINATION ${LUMENO_UDEV_RULES_DIR})
configure_file(${packaging}/lumeno-control-center.service.in
  ${generated}/lumeno-control-center.service @ONLY)
install(FILES ${generated}/lumeno-control-center.service DESTINATION ${LUMENO_SYSTEMD_USER_DIR})

# Licence and changes, in the form that Debian reads.
set(LUMENO_MAINTAINER "The Lumeno Control Center authors <authors@lumeno.velmor.example>")
lumeno_changelog(LUMENO_DEBIAN_CHANGELOG debian
  -v package=lumeno-control-center -v "maintainer=${LUMENO_MAINTAINER}")
file(WRITE ${generated}/changelog.in "${LUMENO_DEBIAN_CHANGELOG}\n")
lumeno_install_compressed(${generated}/changelog.in changelog ${CMAKE_INSTALL_DOCDIR})
file(READ ${PROJECT_SOURCE_DIR}/LICENSE LUMENO_LICENSE_TEXT)
string(REGEX REPLACE "^MIT License\n\nCopyright[^\n]*\n\n" "" LUMENO_LICENSE_TEXT
  "${LUMENO_LICENSE_TEXT}")
string(REGEX REPLACE "\n$" "" LUMENO_LICENSE_TEXT "${LUMENO_LICENSE_TEXT}")
string(REPLACE "\n\n" "\n.\n" LUMENO_LICENSE_TEXT "${LUMENO_LICENSE_TEXT}")
string(REPLACE "\n" "\n " LUMENO_LICENSE_TEXT "${LUMENO_LICENSE_TEXT}")
configure_file(${packaging}/debian/copyright.in ${generated}/copyright @ONLY)
install(FILES ${generated}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})

include(Package)
