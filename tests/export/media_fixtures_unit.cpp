// The media tests' file writers, built into the export tests as well.
#include "tests/media/media_fixtures.cpp"
