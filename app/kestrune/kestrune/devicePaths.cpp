#include "devicePaths.h"

std::string AccountFilePath(int number)
{
    return "/config/user/voip/sipAccount" + std::to_string(number) + ".cfg";
}
