# Run by cpack before the packages are made of the folder of each: what every Debian package has besides.

file(GLOB packages LIST_DIRECTORIES true ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(package IN LISTS packages)
  get_filename_component(group ${package} NAME)
  string(TOUPPER "${group}" group)
  set(name "${CPACK_DEBIAN_${group}_PACKAGE_NAME}")
  if(NOT IS_DIRECTORY ${package} OR NOT name)
    continue()
  endif()
  set(documents ${package}/usr/share/doc/${name})
  configure_file(${CPACK_ORMEL_SOURCE}/cmake/debian-copyright.txt ${documents}/copyright COPYONLY)
  configure_file(${CPACK_ORMEL_SOURCE}/CHANGELOG.md ${documents}/changelog COPYONLY)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${documents}/changelog.Debian "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-1) unstable; urgency=medium

  * Built by cpack.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  file(GLOB compressed ${documents}/changelog* ${package}/usr/share/man/man1/*.1)
  foreach(file IN LISTS compressed)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endforeach()
