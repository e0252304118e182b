#define TIDORA_WRONG_QUOTIENTS WrongQuotientsAvx2
#define TIDORA_FILTER_POINTS_OF_TEST FilterPointsOfTestAvx2
#include "parity/FilterQuotients.h"
