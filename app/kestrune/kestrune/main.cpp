#include "processStart.h"
#include "runSequence.h"

int main(int argumentCount, char** arguments)
{
    PrepareProcess();
    return RunSequence(argumentCount, arguments);
}
