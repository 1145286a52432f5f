# A libfreenect2 that somebody built has no package to depend on. It is installed into a folder of
# our own, where only our programs look for it. One that belongs to a package stays where it is.
get_target_property(links lumeno_libfreenect2 INTERFACE_LINK_LIBRARIES)
list(FILTER links INCLUDE REGEX "^/.*libfreenect2\\.so")
if(NOT links)
  message(FATAL_ERROR "LUMENO_BUNDLE_SENSOR: the libfreenect2 in use is no shared library")
endif()
list(GET links 0 library)
file(REAL_PATH ${library} library)
execute_process(COMMAND dpkg-query -S ${library}
  RESULT_VARIABLE not_packaged OUTPUT_QUIET ERROR_QUIET)
if(not_packaged)
  execute_process(COMMAND ${CMAKE_OBJDUMP} -p ${library}
    OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCH "SONAME +([^ \n]+)" soname "${headers}")
  set(soname ${CMAKE_MATCH_1})
  set(private_folder ${CMAKE_INSTALL_LIBDIR}/lumeno-control-center)
  install(FILES ${library} DESTINATION ${private_folder} RENAME ${soname})
  # Only what this tree builds is stripped by CMake itself.
  set(installed "\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${private_folder}/${soname}")
  install(CODE "if(CMAKE_INSTALL_DO_STRIP)
    execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded \"${installed}\"
      COMMAND_ERROR_IS_FATAL ANY)
  endif()")
  file(RELATIVE_PATH from_libexec ${CMAKE_INSTALL_PREFIX}/${libexec}
    ${CMAKE_INSTALL_PREFIX}/${private_folder})
  file(RELATIVE_PATH from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${private_folder})
  set_target_properties(lumeno-control-center PROPERTIES INSTALL_RPATH "$ORIGIN/${from_libexec}")
  if(tools)
    set_target_properties(${tools} PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin}")
  endif()
  set(LUMENO_BUNDLED_SENSOR ${library})
  set(LUMENO_SENSOR_SENTENCE "a libfreenect2 that is packed along.")
  set(LUMENO_BUNDLED_COPYRIGHT "
Files: usr/${private_folder}/*
Copyright: the OpenKinect project and its contributors
License: Apache-2.0 or GPL-2
 On Debian systems the texts of both licenses are in /usr/share/common-licenses.
")
endif()
