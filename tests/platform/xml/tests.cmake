# Test programs of platform/xml (included from tests/CMakeLists.txt).
