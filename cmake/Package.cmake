# The Debian package, made by "cpack" in the build folder; scripts/package.sh calls it and checks
# what comes out.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lumeno-control-center)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${LUMENO_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "live view and awareness of one room through a Kinect v2")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Shows the color, infrared and depth streams of a Kinect v2 sensor in seven
views, finds faces and tells the enrolled owner from strangers, tracks people
in the depth picture, follows one person with a smooth software crop and zoom,
and shows where a voice comes from.

Sensor library: ${LUMENO_SENSOR_SENTENCE}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
  GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(LUMENO_BUNDLED_SENSOR)
  get_filename_component(folder ${LUMENO_BUNDLED_SENSOR} DIRECTORY)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${folder})
endif()
# The face cascades are data: nothing links them, so that only this line brings them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS opencv-data)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/postinst)
include(CPack)
