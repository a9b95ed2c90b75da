// The process-wide logger. Whether it holds a logger object is also how every exported call
// tells that the module is initialised.
#pragma once

#include "modules/exported.hpp"
#include "modules/unique_ptr_reference_counted.hpp"
#include "modules/xvr_log_object.hpp"

extern NQ_EXPORTED unique_ptr_reference_counted<Xvr_log_object> logger;
