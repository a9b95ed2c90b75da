/* Writes one record through the installed logger library, to wherever the environment says. */
#include <corvane_xvr_logger.h>

#include <stdio.h>

int main(void)
{
    void* log = xvr_get_log("INSTALL_HOST", "");
    int result = xvr_log(log, XVR_LOG_PRIORITY_ERROR, "host_logger.c", __LINE__, "main", "installed logger works");
    xvr_free_log("INSTALL_HOST", "");
    printf("host_logger: %s\n", result == XVR_LOG_ACCEPTED ? "ok" : "failed");
    return result;
}
