# vela_floor(NAME FOLDER ON FLOOR...): one folder of sources as one target. Its include view is a
# folder of the build tree that holds nothing but a link to FOLDER, so "NAME/Header.h" is found by
# this floor and by those that stand on it, and by nobody else.
function(vela_floor name folder)
  cmake_parse_arguments(arg "" "" "ON" ${ARGN})
  set(view ${CMAKE_BINARY_DIR}/view/${name})
  file(MAKE_DIRECTORY ${view})
  file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${view}/${name} SYMBOLIC)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  if(sources)
    add_library(${name} OBJECT ${sources})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${view}>)
    target_link_libraries(${name} PUBLIC ${arg_ON})
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${view}>)
    target_link_libraries(${name} INTERFACE ${arg_ON})
  endif()
endfunction()

# vela_library(NAME OF FLOOR... ON LIBRARY...): a shared library made of whole floors, which exports
# what cmake/exported.map.in says.
function(vela_library name)
  cmake_parse_arguments(arg "" "" "OF;ON" ${ARGN})
  set(objects)
  add_library(${name} SHARED)
  foreach(floor ${arg_OF})
    get_target_property(type ${floor} TYPE)
    if(type STREQUAL OBJECT_LIBRARY)
      target_sources(${name} PRIVATE $<TARGET_OBJECTS:${floor}>)
    endif()
    target_include_directories(${name} INTERFACE
        $<BUILD_INTERFACE:${CMAKE_BINARY_DIR}/view/${floor}>)
  endforeach()
  target_link_libraries(${name} PUBLIC ${arg_ON})
  target_compile_features(${name} INTERFACE cxx_std_20)
  set(exported ${CMAKE_BINARY_DIR}/exported.map)
  configure_file(cmake/exported.map.in ${exported} @ONLY)
  target_link_options(${name} PRIVATE LINKER:--version-script=${exported})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX
      VERSION ${PROJECT_VERSION} SOVERSION ${VELA_ABI} LINK_DEPENDS ${exported})
endfunction()

# vela_static_library(NAME OF FLOOR...): whole floors as one archive, with what they stand on.
function(vela_static_library name)
  cmake_parse_arguments(arg "" "" "OF" ${ARGN})
  add_library(${name} STATIC)
  foreach(floor ${arg_OF})
    get_target_property(type ${floor} TYPE)
    if(type STREQUAL OBJECT_LIBRARY)
      target_sources(${name} PRIVATE $<TARGET_OBJECTS:${floor}>)
    endif()
  endforeach()
  target_link_libraries(${name} PUBLIC ${arg_OF})
endfunction()

# vela_floor_tests(NAME FOLDER LIBRARY...): one test program for one floor; FOLDER mirrors the
# floor's own. A LIBRARY that is a floor gives its objects: the shared libraries keep to themselves
# what no agent needs, and it is tested all the same.
function(vela_floor_tests name folder)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(test_${name} ${sources})
  target_link_libraries(test_${name} PRIVATE ${ARGN} vela_test_support)
  gtest_discover_tests(test_${name} TEST_PREFIX "${name}." DISCOVERY_MODE PRE_TEST
      PROPERTIES TIMEOUT 300)
endfunction()
