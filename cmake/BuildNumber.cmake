# Writes HEADER with the number of commits of SOURCE; 0 where there is no history, as in an unpacked archive. A shallow clone counts
# only what it has.
execute_process(COMMAND git -C ${SOURCE} rev-list --count HEAD OUTPUT_VARIABLE commits ERROR_QUIET RESULT_VARIABLE status
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT status EQUAL 0)
  set(commits 0)
endif()
file(CONFIGURE OUTPUT ${HEADER} CONTENT "#pragma once

#define KELDRA_BUILD_NUMBER \"${commits}\"
")
