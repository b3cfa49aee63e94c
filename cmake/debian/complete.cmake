# What Debian has in every package beside the project's own files. CPack runs this when they are in their folders.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
  configure_file(${CPACK_RESOURCE_FILE_LICENSE} ${root}/share/doc/${name}/copyright COPYONLY)
  file(WRITE ${root}/share/doc/${name}/changelog "${name} (${CPACK_PACKAGE_VERSION}) stable; urgency=medium

  * CHANGELOG.md of the source says what is new in this version.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  file(GLOB pages ${root}/share/man/man*/*.?)
  execute_process(COMMAND gzip -9nf ${root}/share/doc/${name}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
