# The page of the browse panel is put into the program, as a source whose path is in `page_source`. Its scripts stand here in the order of their imports.
set(page_folder "${CMAKE_CURRENT_LIST_DIR}/page")
set(page_files
  index.html style.css details.css icon.svg dom.js text.js address.js catalogue.js grid.js search.js filters.js live.js
  gallery.js stock.js controls.js saving.js details.js main.js)
set(page_source "${CMAKE_CURRENT_BINARY_DIR}/PageFiles.cpp")
list(TRANSFORM page_files PREPEND "${page_folder}/" OUTPUT_VARIABLE page_paths)
add_custom_command(OUTPUT "${page_source}"
  COMMAND "${CMAKE_COMMAND}" "-DFOLDER=${page_folder}" "-DFILES=${page_files}" "-DOUT=${page_source}"
    -P "${PROJECT_SOURCE_DIR}/cmake/EmbedFiles.cmake"
  DEPENDS ${page_paths} "${PROJECT_SOURCE_DIR}/cmake/EmbedFiles.cmake"
  VERBATIM)
