# Tests of the shared library as a host sees it: a C host, its symbol table, its installation.

# A whole run driven from C99 through kurvo.h alone.
add_executable(kurvo_c_api_test ${CMAKE_CURRENT_LIST_DIR}/c_api_test.c)
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/c_api_test.c PROPERTIES LANGUAGE C)
set_target_properties(kurvo_c_api_test PROPERTIES C_STANDARD 99 C_EXTENSIONS OFF)
target_compile_definitions(kurvo_c_api_test PRIVATE _XOPEN_SOURCE=700)
target_link_libraries(kurvo_c_api_test PRIVATE kurvo)
target_link_libraries(kurvo_c_api_test PRIVATE ${CMAKE_DL_LIBS})
add_test(NAME kurvo_c_api COMMAND kurvo_c_api_test ${CMAKE_CURRENT_BINARY_DIR}/tmp $<TARGET_FILE:kurvo>)

# The library exports exactly the functions kurvo.h declares.
add_test(NAME kurvo_exported_symbols
  COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/exported_symbols.sh $<TARGET_FILE:kurvo>
          ${PROJECT_SOURCE_DIR}/include/kurvo.h ${CMAKE_NM})

# An installation into a scratch prefix serves a consumer through pkg-config
# and through find_package. A sanitized library cannot be loaded by a plain
# consumer, so this runs in normal builds only.
if(NOT KURVO_SANITIZE)
  add_test(NAME kurvo_install
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/install_check.sh ${CMAKE_BINARY_DIR}
            ${CMAKE_CURRENT_BINARY_DIR}/install-check ${CMAKE_CURRENT_LIST_DIR}/install_consumer.c
            ${CMAKE_COMMAND} ${CMAKE_C_COMPILER})
endif()
