# What `cmake --install` puts where, in parts that packages are made of: runtime (the library), development (what programs are
# built with), tool (the command, and the plugin for programs that load it).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package "${CMAKE_INSTALL_LIBDIR}/cmake/Tarvo")
set(plugins "${CMAKE_INSTALL_LIBDIR}/tarvo")
set(generated "${PROJECT_BINARY_DIR}/install")

# Packages have their own way to tell it.
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/tarvo" COMPONENT licence)

if(TARVO_PICTURE_LIBRARIES)
  include(TarvoTiff)
  include(TarvoWebp)
endif()
if(TARGET libtarvo)
  install(TARGETS libtarvo EXPORT TarvoTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
  install(FILES library/tarvo.h library/tarvo.hpp DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
  install(EXPORT TarvoTargets NAMESPACE Tarvo:: DESTINATION "${package}" COMPONENT development)
  configure_package_config_file(cmake/TarvoConfig.cmake.in "${generated}/TarvoConfig.cmake"
    INSTALL_DESTINATION "${package}" NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file("${generated}/TarvoConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
  install(FILES "${generated}/TarvoConfig.cmake" "${generated}/TarvoConfigVersion.cmake"
    DESTINATION "${package}" COMPONENT development)

  # The prefix is where the file is, however deep that may be, so that the whole can be moved.
  if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
  else()
    file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${up}")
  endif()
  foreach(folder LIBDIR INCLUDEDIR)
    set(pc_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
      set(pc_${folder} "${CMAKE_INSTALL_${folder}}")
    endif()
  endforeach()
  set(pc_requires "")
  set(pc_libraries "")
  if(NOT BUILD_SHARED_LIBS)
    set(pc_libraries "-lstdc++ -lm -lpthread")
    if(TARVO_PICTURE_LIBRARIES)
      include(TarvoLibdeflate)
      include(TarvoColorProfiles)
      set(pc_requires "libpng libjpeg zlib")
      if(TARVO_COLOR_PROFILES)
        string(APPEND pc_requires " lcms2")
      endif()
      if(TARVO_HAS_TIFF)
        string(APPEND pc_requires " libtiff-4")
      endif()
      if(TARVO_HAS_WEBP)
        string(APPEND pc_requires " libwebpmux libwebpdemux libwebp")
      endif()
      if(TARVO_LIBDEFLATE)
        string(PREPEND pc_libraries "-ldeflate ")
      endif()
    endif()
  endif()
  configure_file(cmake/tarvo.pc.in "${generated}/tarvo.pc" @ONLY)
  install(FILES "${generated}/tarvo.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endif()

# The plugin, for programs that load it, with the platform that it shares with its host.
install(TARGETS TarvoGraphics TarvoPlatform LIBRARY DESTINATION "${plugins}" COMPONENT tool)
set_target_properties(TarvoGraphics TarvoPlatform PROPERTIES INSTALL_RPATH "\$ORIGIN")

if(TARGET tarvo)
  install(TARGETS tarvo RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
  install(FILES "${PROJECT_BINARY_DIR}/share/man/man1/tarvo.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tool)
  install(FILES cli/completion/tarvo.bash DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    RENAME tarvo COMPONENT tool)
  install(FILES cli/completion/_tarvo DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT tool)
  install(FILES cli/completion/tarvo.fish DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT tool)
endif()
