# Test programs of server/handlers and of the appmgrd program (included from tests/CMakeLists.txt).

# AppmgrdProcess runs the real appmgrd program; end-to-end tests link this library, which makes
# sure the program is built first.
add_library(appmgr_test_appmgrd STATIC support/AppmgrdProcess.cc)
target_link_libraries(appmgr_test_appmgrd PUBLIC kpplatform)
target_compile_definitions(appmgr_test_appmgrd PRIVATE
  APPMGRD_PATH="$<TARGET_FILE:appmgrd>" APPMGR_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
add_dependencies(appmgr_test_appmgrd appmgrd)

appmgr_test(server_handlers_tests
  SOURCES server/handlers_test.cc server/list_handlers_test.cc server/client_handlers_test.cc
          server/params_handlers_test.cc server/xml_handlers_test.cc server/snapshot_handlers_test.cc
          server/file_content_handlers_test.cc
  LIBS appmgr_handlers)
appmgr_test(server_handlers_concurrency_tests CONCURRENCY
  SOURCES server/handlers_concurrency_test.cc
  LIBS appmgr_handlers)
appmgr_test(appmgrd_tests
  SOURCES server/appmgrd_test.cc
  LIBS appmgr_handlers appmgr_test_appmgrd SQLite::SQLite3)
foreach(t server_handlers_tests server_handlers_concurrency_tests appmgrd_tests)
  if(TARGET ${t})
    target_compile_definitions(${t} PRIVATE APPMGR_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
  endif()
endforeach()
