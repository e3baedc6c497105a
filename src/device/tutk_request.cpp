#include "device/tutk_request.h"

KvTUTKRequest& KvTUTKRequest::operator=(const KvTUTKRequest& other) {
    m_type = other.m_type;
    m_data = other.m_data;
    return *this;
}

KvTUTKResponse& KvTUTKResponse::operator=(const KvTUTKResponse& other) {
    m_type = other.m_type;
    m_data = other.m_data;
    return *this;
}
