// A library that only tells its own file name, to show which file the loader helpers opened.
extern "C" const char* nq_marker_file()
{
    return NQ_MARKER_FILE;
}
