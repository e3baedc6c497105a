#include "render/video_view.h"

#include <QOpenGLContext>
#include <QtDebug>

#include "render/jpeg_writer.h"
#include "render/picture_program.h"

namespace {

constexpr GLfloat kTextureCorners[] = {0, 1, 1, 1, 0, 0, 1, 0};

// Column by column.
constexpr GLfloat kColorMatrix[] = {1.164f, 1.164f, 1.164f,  0.0f, -0.392f,
                                    2.017f, 1.596f, -0.813f, 0.0f};
constexpr GLfloat kBlackMatrix[9] = {};

}  // namespace

KvVideoView::KvVideoView(QWidget* parent)
    : QOpenGLWidget(parent), m_tick(orvelle::RepaintTick::shared()) {
    connect(this, &KvVideoView::updateAsyncSignal, this, qOverload<>(&KvVideoView::update));
    m_tickClient.repaint = [this] { emit updateAsyncSignal(); };
    m_tickClient.isVisible = [this] { return isVisible(); };
    m_tick->add(&m_tickClient);
}

KvVideoView::~KvVideoView() {
    m_tick->remove(&m_tickClient);
    releaseGl();
}

int KvVideoView::setYUV(const uint8_t* const planes[3], int width, int height,
                        const int linesizes[3]) {
    return setFrame(new KvYUV420P(planes, width, height, linesizes));
}

int KvVideoView::setFrame(KvYUV420P* frame) {
    SharedFrame kept(frame);
    if (kept && kept->isNull())
        kept.reset();
    keepFrame(std::move(kept));
    return 0;
}

int KvVideoView::showFrame(KvYUV420P* frame) {
    setFrame(frame);
    updateAsync();
    return 0;
}

void KvVideoView::updateAsync() {
    m_tick->request(m_tickClient);
}

void KvVideoView::clear() {
    keepFrame(nullptr);
    update();
    qDebug("clear");
}

bool KvVideoView::snapshot(const QString& path) {
    const SharedFrame frame = currentFrame();
    return frame && writeYUV420PJpeg(frame->y(), frame->u(), frame->v(), frame->width(),
                                     frame->height(), path) == 0;
}

void KvVideoView::pictureScale(double* x, double* y) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (x)
        *x = m_scale.x;
    if (y)
        *y = m_scale.y;
}

void KvVideoView::keepFrame(SharedFrame frame) {
    // The old picture is freed after the lock, by whoever lets go of it last.
    std::lock_guard<std::mutex> lock(m_mutex);
    m_frame.swap(frame);
    ++m_frameNumber;
}

KvVideoView::SharedFrame KvVideoView::currentFrame(uint64_t* number) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (number)
        *number = m_frameNumber;
    return m_frame;
}

void KvVideoView::initializeGL() {
    initializeOpenGLFunctions();
    // A view that moves to another window may get a new context.
    disconnect(m_contextConnection);
    m_contextConnection =
        connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &KvVideoView::releaseGl);
    m_program = orvelle::PictureProgram::ofCurrentContext();
    createTextures();
}

void KvVideoView::resizeGL(int, int) {}

void KvVideoView::paintGL() {
    uint64_t number = 0;
    const SharedFrame frame = currentFrame(&number);
    const orvelle::PictureScale scale =
        frame ? orvelle::fitPicture(frame->width(), frame->height(), width(), height())
              : orvelle::PictureScale{};
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_scale = scale;
    }

    const qreal ratio = devicePixelRatioF();
    glViewport(0, 0, qRound(width() * ratio), qRound(height() * ratio));
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glUseProgram(m_program->id());
    if (frame)
        uploadFrame(*frame, number);
    drawQuad(scale, !frame);
    if (const GLenum error = glGetError())
        qDebug("glGetError() = %x", error);
    glFlush();
}

void KvVideoView::createTextures() {
    glGenTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
    for (const GLuint texture : m_textures) {
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
}

void KvVideoView::releaseGl() {
    if (!m_program)
        return;
    makeCurrent();
    glDeleteTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
    m_program.reset();
    doneCurrent();
    disconnect(m_contextConnection);
    m_textures = {};
    m_uploadedNumber = 0;
    m_uploadedSize = {};
}

void KvVideoView::uploadFrame(const KvYUV420P& frame, uint64_t number) {
    for (int unit = 2; unit >= 0; --unit) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        glBindTexture(GL_TEXTURE_2D, m_textures[static_cast<size_t>(unit)]);
    }
    if (number == m_uploadedNumber)
        return;
    const QSize size(frame.width(), frame.height());
    const bool isSameSize = size == m_uploadedSize;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    uploadPlane(0, size.width(), size.height(), frame.y(), isSameSize);
    uploadPlane(1, size.width() / 2, size.height() / 2, frame.u(), isSameSize);
    uploadPlane(2, size.width() / 2, size.height() / 2, frame.v(), isSameSize);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glActiveTexture(GL_TEXTURE0);
    m_uploadedNumber = number;
    m_uploadedSize = size;
}

void KvVideoView::uploadPlane(int unit, int width, int height, const uint8_t* bytes,
                              bool isSameSize) {
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    if (isSameSize)
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_LUMINANCE, GL_UNSIGNED_BYTE,
                        bytes);
    else
        glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, width, height, 0, GL_LUMINANCE,
                     GL_UNSIGNED_BYTE, bytes);
}

void KvVideoView::drawQuad(const orvelle::PictureScale& scale, bool isBlack) {
    if (!m_program->isUsable())
        return;
    const std::array<float, 8> corners = orvelle::pictureCorners(scale);
    const GLuint vertex = m_program->vertexAttribute();
    const GLuint texture = m_program->textureAttribute();
    glEnableVertexAttribArray(vertex);
    glVertexAttribPointer(vertex, 2, GL_FLOAT, GL_FALSE, 0, corners.data());
    glEnableVertexAttribArray(texture);
    glVertexAttribPointer(texture, 2, GL_FLOAT, GL_FALSE, 0, kTextureCorners);
    glUniformMatrix3fv(m_program->matrixUniform(), 1, GL_FALSE,
                       isBlack ? kBlackMatrix : kColorMatrix);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glDisableVertexAttribArray(texture);
    glDisableVertexAttribArray(vertex);
}
