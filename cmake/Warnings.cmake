# One interface target carries the warnings, which are errors in every preset of ours.
option(NIBBO_WERROR "Treat warnings as errors" ON)
add_library(nibbo_warnings INTERFACE)
target_compile_options(nibbo_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wold-style-cast)
if(NIBBO_WERROR)
  target_compile_options(nibbo_warnings INTERFACE -Werror)
endif()
target_compile_definitions(nibbo_warnings INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
  QT_NO_URL_CAST_FROM_STRING)
