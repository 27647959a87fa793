# Who the program is and whom it talks to: the one place of version, application id, bus names, hosts and key. Only
# launch/ sees them, as identity/Identity.h.

set(KELDRA_APPLICATION_ID com.keldra.KELDRA)
set(KELDRA_BUS_NAME ${KELDRA_APPLICATION_ID})
set(KELDRA_EARLIER_BUS_NAME com.keldra.TurvexCaptureNative)

set(KELDRA_HOSTS_FILE ${CMAKE_SOURCE_DIR}/cmake/hosts.cmake CACHE FILEPATH
  "The hosts and the key of a deployment; see cmake/hosts.cmake")
include(${KELDRA_HOSTS_FILE})

set(identity ${CMAKE_BINARY_DIR}/identity)
configure_file(${CMAKE_SOURCE_DIR}/cmake/Identity.h.in ${identity}/identity/Identity.h)

# The build's number grows with every commit, so every build asks for it.
add_custom_target(keldra_build_number
  COMMAND ${CMAKE_COMMAND} -D SOURCE=${CMAKE_SOURCE_DIR} -D HEADER=${identity}/identity/BuildNumber.h
    -P ${CMAKE_SOURCE_DIR}/cmake/BuildNumber.cmake
  BYPRODUCTS ${identity}/identity/BuildNumber.h
  COMMENT "Counting commits")

add_library(keldra_identity INTERFACE)
target_include_directories(keldra_identity INTERFACE ${identity})
add_dependencies(keldra_identity keldra_build_number)
