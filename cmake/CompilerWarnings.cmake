# The warnings every target of the project is built with. Each is here for a reason; all of them are errors.
add_library(orv_warnings INTERFACE)
if(MSVC)
  target_compile_options(orv_warnings INTERFACE
    /W4 /WX
    /permissive-   # the standard's own rules, as GCC and Clang apply them
    /utf-8         # sources are UTF-8 whatever the machine's code page
    # Exported classes with standard-library members or bases: the library and its host share one runtime, so both
    # have the same ones.
    /wd4251 /wd4275
  )
else()
  target_compile_options(orv_warnings INTERFACE
    -Wall -Wextra -Werror
    -Wpedantic              # no compiler extensions: the sources also build with MSVC
    -Wshadow                # a hidden name has bitten every code base once
    -Wconversion            # sizes and time values must not narrow silently
    -Wsign-conversion       # the same for signs
    -Wnon-virtual-dtor      # records and controls are deleted through their base
    -Woverloaded-virtual    # an override that hides instead
    -Wold-style-cast
    -Wcast-align
    -Wnull-dereference
    -Wimplicit-fallthrough
    -Wundef                 # a misspelt platform macro reads as 0 otherwise
  )
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(orv_warnings INTERFACE
      -Wduplicated-cond -Wlogical-op -Wuseless-cast -Wsuggest-override
      # GCC 12 reports these inside inlined standard-library strings and variants where nothing is wrong.
      -Wno-restrict -Wno-error=maybe-uninitialized -Wno-error=null-dereference -Wno-error=stringop-overflow
      -Wno-error=array-bounds -Wno-error=stringop-overread -Wno-error=free-nonheap-object
      # Where several sources are compiled as one, what a source keeps to itself looks like a header's.
      $<$<OR:$<BOOL:${CMAKE_UNITY_BUILD}>,$<BOOL:${ORV_UNITY_PROGRAMS}>>:-Wno-subobject-linkage>
    )
  endif()
endif()
