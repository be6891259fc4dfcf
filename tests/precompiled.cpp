// Holds nothing: the compiler needs a source to precompile the headers of the tests with.
