# Build settings shared by every target of the project: warnings, sanitizers, and the helpers that
# let each family folder add its own sources and tests without editing a central list.

set(QZ_WARNINGS -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wno-unused-parameter)

if(QZ_SANITIZE)
  add_compile_options(-fsanitize=${QZ_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QZ_SANITIZE})
endif()

# qz_target_warnings(target): the project's warning set, as errors when QZ_WERROR is on.
option(QZ_WERROR "Treat warnings as errors" OFF)
function(qz_target_warnings target)
  target_compile_options(${target} PRIVATE ${QZ_WARNINGS})
  if(QZ_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
