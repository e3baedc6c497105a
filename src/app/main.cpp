#include <QtGlobal>

#include "app/start_up.h"

int main(int argc, char** argv) {
    Q_INIT_RESOURCE(orvelle);
    return orvelle::runOrvelle(argc, argv);
}
