// Defines platform/framework/ProcessException.h: the key functions.

#include "platform/framework/ProcessException.h"

ProcessException::~ProcessException() = default;
InterfaceNotExistException::~InterfaceNotExistException() = default;
