// A lower layer that leans on a higher one: what the check of the layers must find.
#include "rules/line_record.h"
