// A source for the target that compiles the headers all tests share: see Multiscene.cmake.
