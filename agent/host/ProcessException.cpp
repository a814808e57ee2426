// Key functions of the framework's exceptions.

#include "platform/framework/ProcessException.h"

ProcessException::~ProcessException() = default;
InterfaceNotExistException::~InterfaceNotExistException() = default;
