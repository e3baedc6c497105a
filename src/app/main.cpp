#include <QtGlobal>

#include "app/start_up.h"
#include "platform/heap.h"

int main(int argc, char** argv) {
    orvelle::keepHeapSmall();
    Q_INIT_RESOURCE(orvelle);
    return orvelle::runOrvelle(argc, argv);
}
