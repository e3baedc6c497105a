#include <QtGlobal>

#include "app/command_line.h"
#include "app/start_up.h"
#include "platform/heap.h"
#include "platform/secret_memory.h"
#include "platform/write_fault.h"

int main(int argc, char** argv) {
    if (const auto code = orvelle::answerCommandLine(argc, argv))
        return *code;
    orvelle::keepMemorySecret();
    orvelle::keepHeapSmall();
    orvelle::letTooLargeWritesFail();
    Q_INIT_RESOURCE(orvelle);
    return orvelle::runOrvelle(argc, argv);
}
