if(QV_SANITIZE)
  add_compile_options(-fsanitize=${QV_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QV_SANITIZE})
endif()
