/* Writes one record through the installed logger library, to wherever the environment says. */
#include <corvane_xvr_logger.h>

#include <stdio.h>

int main(void)
{
    void* log = xvr_get_log("INSTALL_HOST", "");
    int result;
    if (log == NULL) return 1;
    result = xvr_log(log, XVR_LOG_PRIORITY_ERROR, "host_logger.c", __LINE__, "main",
                     "installed logger works");
    xvr_free_log("INSTALL_HOST", "");
    puts(result == XVR_LOG_ACCEPTED ? "host_logger: ok" : "host_logger: failed");
    return result;
}
