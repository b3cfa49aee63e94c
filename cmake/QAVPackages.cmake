# Debian packages, made by scripts/package: the libraries, what is needed to build against them, and the program.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qavmmediarasterprocessor)
set(QAV_PACKAGE_MAINTAINER "QAVMMediaRasterProcessor Developers <developers@example.org>" CACHE STRING
  "Who answers for the Debian packages, as NAME <ADDRESS>")
set(CPACK_PACKAGE_CONTACT "${QAV_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/complete.cmake)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tool)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# The major version is the binary interface's, so that packages of two can be installed together.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libqavmmediarasterprocessor${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Shared libraries.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqavmmediarasterprocessor-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# The static libraries need these at the caller's.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libtiff-dev, libpng-dev, libjpeg-dev, liblcms2-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, static libraries, CMake package and pkg-config file.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME qavraster)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DESCRIPTION "Command-line program that changes, converts and compares raster pictures.")

# Which packages have the libraries that ours need; ours are found in the build folder.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)
