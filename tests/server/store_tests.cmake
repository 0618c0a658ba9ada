# Test programs of server/store (included from tests/CMakeLists.txt).
appmgr_test(server_store_tests
  SOURCES server/store_test.cc server/backup_set_store_test.cc server/property_store_test.cc
          server/fixture_test.cc server/entity_tree_store_test.cc server/list_store_test.cc
          server/client_store_test.cc server/appid_store_test.cc server/content_store_test.cc
          server/params_store_test.cc server/subclient_store_test.cc
          server/apptype_store_test.cc
          server/alert_store_test.cc server/advisory_store_test.cc
          server/log_monitor_store_test.cc
          server/snapshot_store_test.cc server/file_content_store_test.cc
  LIBS appmgr_store)
# The fixture test loads the shipped demo fixture from the source tree.
if(TARGET server_store_tests)
  target_compile_definitions(server_store_tests PRIVATE APPMGR_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
endif()
appmgr_test(server_store_concurrency_tests CONCURRENCY
  SOURCES server/store_concurrency_test.cc
  LIBS appmgr_store)
