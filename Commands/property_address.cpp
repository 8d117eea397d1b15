#include "Commands/property_address.hpp"
