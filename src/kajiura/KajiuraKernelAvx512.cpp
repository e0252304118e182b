#define TIDORA_FILTER_POINTS FilterPointsAvx512
#include "kajiura/KajiuraKernel.h"
