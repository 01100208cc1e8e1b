# What every Windows build of the project shares, whatever the compiler.
target_compile_definitions(orv_warnings INTERFACE
  UNICODE _UNICODE       # the system's UTF-16 functions
  NOMINMAX WIN32_LEAN_AND_MEAN
  _WIN32_WINNT=0x0A00)   # Windows 10: Boost.Asio asks for a choice

if(MINGW)
  set(CMAKE_SHARED_LIBRARY_PREFIX "") # orvcapsule.dll, as a native build names it
  add_compile_options(-Wa,-mbig-obj)  # templates make more sections than the small object format counts

  # Exceptions and standard-library objects cross between the DLLs and the host, so all share one C++ runtime, which
  # lies beside the programs.
  foreach(runtime libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${runtime}
      OUTPUT_VARIABLE runtime_path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    file(REAL_PATH "${runtime_path}" runtime_path)
    list(APPEND ORV_RUNTIME_DLLS "${runtime_path}")
  endforeach()
  file(COPY ${ORV_RUNTIME_DLLS} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  install(FILES ${ORV_RUNTIME_DLLS} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
endif()
