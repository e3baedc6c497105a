#include <QtGlobal>

#include "app/start_up.h"
#include "platform/heap.h"
#include "platform/secret_memory.h"

int main(int argc, char** argv) {
    orvelle::keepMemorySecret();
    orvelle::keepHeapSmall();
    Q_INIT_RESOURCE(orvelle);
    return orvelle::runOrvelle(argc, argv);
}
