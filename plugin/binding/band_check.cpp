#include "band_check.h"

#ifdef TARVO_CHECKS_BANDS
namespace tarvo::plugin {

constinit thread_local bool thread_is_in_band = false;

}  // namespace tarvo::plugin
#endif
