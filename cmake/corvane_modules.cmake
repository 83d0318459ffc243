# How folders become libraries and test programs. A folder's sources are whatever lies in it.

add_library(corvane_options INTERFACE)
target_include_directories(corvane_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(corvane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow=local -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion
  -Wno-sign-conversion -Wno-missing-field-initializers
  # Inlining far, g++ 12 sees overlapping copies and uninitialised values that are none, so only builds that do not
  # optimise hold warnings for errors: the one that `make test` makes.
  $<$<BOOL:${CORVANE_WARNINGS_ARE_ERRORS}>:-Werror>
  $<$<CONFIG:Release>:-Wno-restrict>
  $<$<CONFIG:Release>:-Wno-maybe-uninitialized>)
if(CORVANE_SANITIZERS)
  target_compile_options(corvane_options INTERFACE -fsanitize=${CORVANE_SANITIZERS} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  target_link_options(corvane_options INTERFACE -fsanitize=${CORVANE_SANITIZERS})
  # g++ 12 sees uninitialised values that are none once the sanitizers' checks are woven in.
  target_compile_options(corvane_options INTERFACE -Wno-maybe-uninitialized)
endif()

# corvane_module(NAME base FOLDER base LINKS fmt::fmt) makes the library corvane_base from src/base/*.cpp.
function(corvane_module)
  cmake_parse_arguments(ARG "" "NAME;FOLDER" "LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${ARG_FOLDER}/*.cpp)
  if(sources)
    add_library(corvane_${ARG_NAME} STATIC ${sources})
    target_link_libraries(corvane_${ARG_NAME} PUBLIC corvane_options ${ARG_LINKS})
  else()
    add_library(corvane_${ARG_NAME} INTERFACE)
    target_link_libraries(corvane_${ARG_NAME} INTERFACE corvane_options ${ARG_LINKS})
  endif()
endfunction()

# corvane_tests(NAME base FOLDER base LINKS corvane_base) makes corvane_base_tests from tests/base/*.cpp and
# tells CTest of each test in it.
add_library(corvane_known_texts OBJECT EXCLUDE_FROM_ALL ${CMAKE_SOURCE_DIR}/tests/support/known_texts.cpp)
target_compile_definitions(corvane_known_texts PRIVATE CORVANE_TEXTS="${CMAKE_SOURCE_DIR}/po/corvane.pot")
target_link_libraries(corvane_known_texts PUBLIC corvane_options GTest::gtest fmt::fmt)

function(corvane_tests)
  cmake_parse_arguments(ARG "" "NAME;FOLDER" "LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${ARG_FOLDER}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(corvane_${ARG_NAME}_tests ${sources} $<TARGET_OBJECTS:corvane_known_texts>)
  target_include_directories(corvane_${ARG_NAME}_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(corvane_${ARG_NAME}_tests PRIVATE corvane_options ${ARG_LINKS} GTest::gtest GTest::gmock GTest::gtest_main)
  gtest_discover_tests(corvane_${ARG_NAME}_tests DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT 120)
endfunction()
