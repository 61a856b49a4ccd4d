# Debian packages, by `cpack` in a build that was configured with -DCMAKE_INSTALL_PREFIX=/usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvo)
set(CPACK_PACKAGE_VENDOR "Tarvo Graphics")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
# Whatever the umask of the builder.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Tarvo Graphics <packages@tarvo-graphics.example>")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_COMPONENTS_ALL)
set(long "Adjusting, combining, turning, stretching and filtering pictures:\n operations that give the same bits on every machine.")

# tarvo_package(COMPONENT NAME SECTION SUMMARY): a package of one component, with the files that every package has.
function(tarvo_package component name section summary)
  string(TOUPPER "${component}" upper)
  set(documents "${PROJECT_BINARY_DIR}/packages-of/${name}")
  file(MAKE_DIRECTORY "${documents}")
  file(READ "${PROJECT_SOURCE_DIR}/LICENSE" licence)
  string(REGEX REPLACE "^MIT License\n\n(Copyright[^\n]*)\n\n" "" terms "${licence}")
  set(holder "${CMAKE_MATCH_1}")
  string(STRIP "${terms}" terms)
  string(REPLACE "\n\n" "\n.\n" terms "${terms}")
  string(REPLACE "\n" "\n " terms "${terms}")
  file(WRITE "${documents}/copyright" "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: Tarvo Graphics

Files: *
Copyright: ${holder}
License: MIT
 ${terms}
")
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE "${documents}/changelog.Debian" "tarvo (${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * See CHANGELOG.md of the sources.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}
")
  execute_process(COMMAND gzip -9nf "${documents}/changelog.Debian" COMMAND_ERROR_IS_FATAL ANY)
  install(FILES "${documents}/copyright" "${documents}/changelog.Debian.gz"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${name}" COMPONENT ${component} EXCLUDE_FROM_ALL)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n ${long}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n ${long}" PARENT_SCOPE)
endfunction()

if(TARGET libtarvo AND BUILD_SHARED_LIBS)
  tarvo_package(runtime libtarvo${PROJECT_VERSION_MAJOR} libs "picture operations for programs: the library")
  # Other packages are told what to depend on, and the loader's cache is made anew.
  set(control "${PROJECT_BINARY_DIR}/packages-of")
  file(WRITE "${control}/shlibs" "libtarvo ${PROJECT_VERSION_MAJOR} libtarvo${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})\n")
  file(WRITE "${control}/triggers" "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${control}/shlibs;${control}/triggers")
endif()
if(TARGET libtarvo)
  tarvo_package(development libtarvo-dev libdevel "picture operations for programs: what they are built with")
  if(BUILD_SHARED_LIBS)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
      "libtarvo${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
  else()
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libpng-dev, libjpeg-dev, zlib1g-dev, libdeflate-dev, liblcms2-dev, libtiff-dev, libwebp-dev")
  endif()
endif()
if(TARGET tarvo)
  tarvo_package(tool tarvo graphics "picture operations on files: the command, and the plugin")
endif()
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/compress_manuals.cmake")
include(CPack)
