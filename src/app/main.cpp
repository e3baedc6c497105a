#include "app/start_up.h"

int main(int argc, char** argv) {
    return orvelle::runOrvelle(argc, argv);
}
