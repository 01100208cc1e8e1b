# What a host gets: both shared libraries, the public headers under the include texts that the tree uses, a CMake
# package and a pkg-config file. Headers that are shared inside the project (shared/) and private ones (detail/) stay here.
include(CMakePackageConfigHelpers)

set(ORV_INCLUDE_DIR "${CMAKE_INSTALL_INCLUDEDIR}/orvcapsule")
install(TARGETS orvplatform orvcapsule EXPORT orvcapsuleTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  INCLUDES DESTINATION "${ORV_INCLUDE_DIR}")

foreach(folder IN ITEMS capsule package validation sources rewrite manager stock fontusage)
  if(IS_DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}")
    install(DIRECTORY "${folder}" DESTINATION "${ORV_INCLUDE_DIR}" COMPONENT development
      FILES_MATCHING PATTERN "*.h" PATTERN detail EXCLUDE PATTERN shared EXCLUDE)
  endif()
endforeach()
install(DIRECTORY platform/ DESTINATION "${ORV_INCLUDE_DIR}" COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN detail EXCLUDE PATTERN shared EXCLUDE)
install(DIRECTORY "${PROJECT_BINARY_DIR}/generated/" DESTINATION "${ORV_INCLUDE_DIR}" COMPONENT development
  FILES_MATCHING PATTERN "*.h")

set(ORV_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/orvcapsule")
install(EXPORT orvcapsuleTargets NAMESPACE orvcapsule:: DESTINATION "${ORV_CMAKE_DIR}" COMPONENT development)
configure_package_config_file(cmake/orvcapsuleConfig.cmake.in "${PROJECT_BINARY_DIR}/orvcapsuleConfig.cmake"
  INSTALL_DESTINATION "${ORV_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/orvcapsuleConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/orvcapsuleConfig.cmake" "${PROJECT_BINARY_DIR}/orvcapsuleConfigVersion.cmake"
  DESTINATION "${ORV_CMAKE_DIR}" COMPONENT development)

# Seen from where the file itself lies, so that an installed tree can be moved or packed for another place.
set(ORV_PC_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH ORV_PC_TO_PREFIX "/prefix/${ORV_PC_DIR}" "/prefix")
string(REGEX REPLACE "/$" "" ORV_PC_TO_PREFIX "${ORV_PC_TO_PREFIX}")
configure_file(cmake/orvcapsule.pc.in "${PROJECT_BINARY_DIR}/orvcapsule.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/orvcapsule.pc" DESTINATION "${ORV_PC_DIR}" COMPONENT development)
install(FILES NOTICES DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)

# For those who write hosts and templates: the pages, the schema for editors, examples, and the library's own texts as a
# dictionary to translate.
orv_write_dictionary("${PROJECT_BINARY_DIR}/localisation/en_US.txt"
  platform capsule package validation sources rewrite stock manager fontusage)
install(DIRECTORY docs/ DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)
set(ORV_EXAMPLES_DIR "${CMAKE_INSTALL_DOCDIR}/examples")
install(DIRECTORY examples/ DESTINATION "${ORV_EXAMPLES_DIR}" COMPONENT development FILES_MATCHING PATTERN "*.cpp")
install(FILES examples/standalone.cmake DESTINATION "${ORV_EXAMPLES_DIR}" RENAME CMakeLists.txt COMPONENT development)
foreach(part IN ITEMS Arguments Console)
  install(FILES tools/support/${part}.h tools/support/${part}Posix.cpp tools/support/${part}Windows.cpp
    DESTINATION "${ORV_EXAMPLES_DIR}/tools/support" COMPONENT development)
endforeach()
install(FILES README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)
install(FILES docs/definition.schema.json docs/cloud-library.schema.json "${PROJECT_BINARY_DIR}/localisation/en_US.txt"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/orvcapsule" COMPONENT development)
