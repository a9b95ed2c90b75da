#include "modules/logger.hpp"

unique_ptr_reference_counted<Xvr_log_object> logger;
