# qav_add_library(NAME VERSION_SCRIPT file OBJECTS object-libraries...)
# Makes the shared library NAME and the static library NAMEStatic from the same objects.
function(qav_add_library name)
  cmake_parse_arguments(ARG "" "VERSION_SCRIPT" "OBJECTS;INCLUDES" ${ARGN})
  set(objects ${ARG_OBJECTS})
  list(TRANSFORM objects REPLACE "(.+)" "$<TARGET_OBJECTS:\\1>")
  add_library(${name} SHARED ${objects})
  add_library(${name}Static STATIC ${objects})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${ARG_VERSION_SCRIPT})
  set_target_properties(${name}Static PROPERTIES OUTPUT_NAME ${name})
  # -z defs: a symbol that nobody provides is an error here, not in the caller's program.
  target_link_options(${name} PRIVATE -Wl,--version-script=${ARG_VERSION_SCRIPT} -Wl,--gc-sections
    $<$<NOT:$<CONFIG:Asan,Fuzz>>:-Wl,-z,defs>)
  foreach(target ${name} ${name}Static)
    foreach(directory ${ARG_INCLUDES})
      target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${directory}>)
    endforeach()
    target_include_directories(${target} PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/QAVMMediaRasterProcessor>)
    target_compile_features(${target} PUBLIC cxx_std_20)
  endforeach()
endfunction()
