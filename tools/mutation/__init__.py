"""Mutation testing for the project's C++ sources: plants one fault at a time in a copy of the
tree, rebuilds it incrementally and runs the test suite against it (see tools/mutate)."""
