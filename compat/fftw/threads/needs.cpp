// Of a library of threads there is nothing but its name and its need of the library itself, which has all of it. A file
// of its own, since a preloaded library stands in by the name that it bears: a link would leave a program the threads
// of another FFTW beside this one.
