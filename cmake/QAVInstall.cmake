# What `cmake --install` puts in place. Everything finds everything else relative to itself, so a prefix may be moved.
include(CMakePackageConfigHelpers)

set(package QAVMMediaRasterProcessor)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${package})

install(TARGETS QAVPlatform QAVMMediaRasterProcessor EXPORT ${package}Shared
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS QAVPlatformStatic QAVMMediaRasterProcessorStatic EXPORT ${package}Static
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/QAVMMediaRasterProcessor_Base.m/include/*.h
  ${PROJECT_SOURCE_DIR}/platform/*/include/*.h)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${package} COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT runtime)

file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(QAVMMediaRasterProcessor PROPERTIES INSTALL_RPATH "$ORIGIN")
if(TARGET qavraster)
  set_target_properties(qavraster PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
  install(TARGETS qavraster RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/qavraster.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  install(FILES ${PROJECT_BINARY_DIR}/tools/completion/qavraster
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
endif()

# Two sets of targets: only the static libraries need TIFF, PNG, JPEG and lcms2 at the caller's.
foreach(kind Shared Static)
  install(EXPORT ${package}${kind} NAMESPACE ${package}:: DESTINATION ${package_dir}
    FILE ${package}${kind}Targets.cmake COMPONENT development)
endforeach()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/${package}Config.cmake.in
  ${PROJECT_BINARY_DIR}/${package}Config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/${package}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/${package}Config.cmake ${PROJECT_BINARY_DIR}/${package}ConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${pkgconfig_dir} COMPONENT development)
