# Tests of what packaging/ installs (included from tests/CMakeLists.txt). Not under the
# sanitizers: a program built outside this build cannot load an instrumented library, and the
# scripts run the programs as a user would.
if(NOT APPMGR_SANITIZE AND NOT APPMGR_TSAN_ONLY AND TARGET appmgrd AND TARGET appmgrctl)
  # Installed as a packager installs it, then used as a user would: programs built with
  # find_package(appmgrnet) and with pkg-config reach the installed appmgrd.
  add_test(NAME Install.ConsumersBuildAgainstTheInstalledTreeAndReachAppmgrd
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/packaging/install_test.sh ${PROJECT_SOURCE_DIR}
            ${CMAKE_BINARY_DIR} ${CMAKE_CXX_COMPILER} ${CMAKE_GENERATOR} ${CMAKE_INSTALL_LIBDIR}
            ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_SBINDIR})
  set_tests_properties(Install.ConsumersBuildAgainstTheInstalledTreeAndReachAppmgrd
    PROPERTIES TIMEOUT 300 LABELS unit)
  add_test(NAME Install.BashCompletionOffersTheProgramsOwnCommandsAndOptions
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/packaging/completion_test.sh ${PROJECT_SOURCE_DIR}
            $<TARGET_FILE:appmgrctl> $<TARGET_FILE:appmgrd>)
  set_tests_properties(Install.BashCompletionOffersTheProgramsOwnCommandsAndOptions
    PROPERTIES TIMEOUT 60 LABELS unit)
endif()
