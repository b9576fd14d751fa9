#include "shell/ctr_zandorel.h"

namespace control {

// The commit of a tournée lands with the saving of tournées; until then nothing is written and a
// question on saving that is answered Yes keeps the screen as it is.
void Ctr_Zandorel::Cmd_Ok_Click() {
    m_commitReussi = false;
}

}  // namespace control
