# Test programs of platform/xml (included from tests/CMakeLists.txt).
appmgr_test(platform_xml_tests
  SOURCES
    platform/xml/entity_test.cc
    platform/xml/text_test.cc
    platform/xml/message_test.cc
    platform/xml/malformed_test.cc
  LIBS kpplatform)
# Initialize is raced on by its callers; this program runs under ThreadSanitizer too.
appmgr_test(platform_xml_concurrency_tests CONCURRENCY
  SOURCES platform/xml/initialize_concurrency_test.cc
  LIBS kpplatform)
