# Tests of appmgrctl (included from tests/CMakeLists.txt). They run the built program as a child
# process, loading the built library, against appmgrd started by AppmgrdProcess, so all three
# programs must exist in this build.
if(TARGET appmgrctl AND TARGET appmgrnet AND TARGET appmgr_test_appmgrd)
  appmgr_test(tools_tests
    SOURCES tools/appmgrctl_test.cc tools/appmgrctl_params_test.cc tools/appmgrctl_subclient_test.cc
            tools/appmgrctl_instances_test.cc tools/CtlRun.cc
    LIBS appmgr_test_appmgrd appmgr_server_core nlohmann_json::nlohmann_json)
endif()
if(TARGET tools_tests)
  # A library that lacks one export, for the load-failure cases.
  add_library(appmgrctl_incomplete_lib SHARED tools/IncompleteLibrary.cc)
  set_target_properties(appmgrctl_incomplete_lib PROPERTIES CXX_VISIBILITY_PRESET hidden)
  target_compile_definitions(tools_tests PRIVATE
    APPMGRCTL_PATH="$<TARGET_FILE:appmgrctl>"
    APPMGRNET_PATH="$<TARGET_FILE:appmgrnet>"
    APPMGRCTL_INCOMPLETE_LIB="$<TARGET_FILE:appmgrctl_incomplete_lib>"
    APPMGR_DEMO_FIXTURE="${CMAKE_SOURCE_DIR}/server/fixtures/demo.json")
  # Run-time dependencies only: the test starts these programs, it links none of them.
  add_dependencies(tools_tests appmgrctl appmgrnet appmgrctl_incomplete_lib)
endif()
