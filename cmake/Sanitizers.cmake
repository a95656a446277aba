if(NIBBO_SANITIZE)
  add_compile_options(-fsanitize=${NIBBO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${NIBBO_SANITIZE})
endif()
