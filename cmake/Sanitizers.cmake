# Sanitizers and coverage for a whole build tree; the presets set the two variables.
if(ORV_SANITIZE)
  add_compile_options(-fsanitize=${ORV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ORV_SANITIZE})
endif()
if(ORV_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
