# Tests of the kurvo command: query language unit tests, and end-to-end runs
# of the built binary on generated folders.
if(TARGET kurvo_cli_support)
  file(GLOB kurvo_cli_unit CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*_test.cpp)
  add_executable(kurvo_cli_tests ${kurvo_cli_unit})
  target_include_directories(kurvo_cli_tests PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(kurvo_cli_tests PRIVATE kurvo_cli_support GTest::gtest GTest::gtest_main)
  target_compile_definitions(kurvo_cli_tests PRIVATE KURVO_HEADER="${PROJECT_SOURCE_DIR}/include/kurvo.h")
  gtest_discover_tests(kurvo_cli_tests DISCOVERY_TIMEOUT 60)
endif()

if(TARGET kurvo_cli)
  file(GLOB kurvo_cli_e2e CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/e2e_*.sh)
  foreach(script ${kurvo_cli_e2e})
    get_filename_component(name ${script} NAME_WE)
    add_test(NAME cli_${name}
      COMMAND bash ${script} $<TARGET_FILE:kurvo_cli> ${CMAKE_CURRENT_BINARY_DIR}/cli-tmp)
    set_tests_properties(cli_${name} PROPERTIES TIMEOUT 300)
  endforeach()
endif()
