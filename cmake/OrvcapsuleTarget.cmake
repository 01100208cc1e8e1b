# How orvcapsule is built once its subsystem folders have added their sources.
generate_export_header(orvcapsule
  EXPORT_MACRO_NAME ORVCAPSULE_API
  EXPORT_FILE_NAME "${PROJECT_BINARY_DIR}/generated/orvcapsule/Export.h")
target_include_directories(orvcapsule PUBLIC
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
  "$<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/generated>"
  "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/orvcapsule>")
target_link_libraries(orvcapsule PUBLIC orvplatform PRIVATE $<BUILD_INTERFACE:orv_warnings>)
orv_hide_dependencies(orvcapsule)
orv_precompile(orvcapsule)
set_target_properties(orvcapsule PROPERTIES
  INSTALL_RPATH "$ORIGIN" VERSION ${PROJECT_VERSION} SOVERSION ${ORV_SOVERSION})
