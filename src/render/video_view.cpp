#include "render/video_view.h"

#include <QLoggingCategory>
#include <QOpenGLContext>
#include <QtDebug>

#include "render/jpeg_writer.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace {

Q_LOGGING_CATEGORY(lcRender, "orvelle.render")

constexpr char kVertexShader[] =
    "attribute vec4 vertexIn; attribute vec2 textureIn; varying vec2 textureOut; void main(void) { "
    "gl_Position = vertexIn; textureOut = textureIn; }";

constexpr char kFragmentShader[] =
    "varying vec2 textureOut; uniform sampler2D textureY; uniform sampler2D textureU; uniform "
    "sampler2D textureV; uniform mat3 colorConversionMatrix; void main(void){ vec3 yuv; vec3 rgb; "
    "yuv.x = texture2D(textureY, textureOut).r; yuv.y = texture2D(textureU, textureOut).r - 0.5; "
    "yuv.z = texture2D(textureV, textureOut).r - 0.5; rgb = colorConversionMatrix * yuv; "
    "gl_FragColor = vec4(rgb, 1); }";

// OpenGL ES has no default precision for fragments.
constexpr char kEmbeddedPrecision[] = "precision mediump float; ";

constexpr GLfloat kTextureCorners[] = {0, 1, 1, 1, 0, 0, 1, 0};

// Column by column.
constexpr GLfloat kColorMatrix[] = {1.164f, 1.164f, 1.164f,  0.0f, -0.392f,
                                    2.017f, 1.596f, -0.813f, 0.0f};
constexpr GLfloat kBlackMatrix[9] = {};

/// From this share of a picture's width downwards mipmaps are worth their price.
constexpr double kMipmapShare = 0.6;

orvelle::PictureScale fitIn(const KvYUV420P& frame, const QSize& view) {
    return orvelle::fitPicture(frame.width(), frame.height(), view.width(), view.height());
}

}  // namespace

KvVideoView::KvVideoView(QWidget* parent)
    : QOpenGLWidget(parent), VideoSurface(static_cast<QWidget&>(*this)) {
    connect(this, &KvVideoView::updateAsyncSignal, this, qOverload<>(&KvVideoView::update));
}

KvVideoView::~KvVideoView() {
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

int KvVideoView::showPicture(const AVFrame& picture) {
    auto frame =
        std::make_unique<KvYUV420P>(picture.data, picture.width, picture.height, picture.linesize);
    return frame->isNull() ? -1 : showFrame(frame.release());
}

void KvVideoView::updateAsync() {
    requestRepaint();
}

void KvVideoView::clear() {
    keepFrame(nullptr);
    update();
    qDebug("clear");
}

bool KvVideoView::snapshot(const QString& path, const QDateTime& takenAt) {
    const SharedFrame frame = currentFrame();
    return frame && writeYUV420PJpeg(frame->y(), frame->u(), frame->v(), frame->width(),
                                     frame->height(), path, takenAt) == 0;
}

void KvVideoView::pictureScale(double* x, double* y) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (x)
        *x = m_scale.x;
    if (y)
        *y = m_scale.y;
}

orvelle::PictureScale KvVideoView::fit() const {
    const SharedFrame frame = currentFrame();
    return frame ? fitIn(*frame, size()) : orvelle::PictureScale{};
}

void KvVideoView::keepFrame(SharedFrame frame) {
    // The old picture is freed after the lock, by whoever lets go of it last.
    std::lock_guard<std::mutex> lock(m_mutex);
    m_frame.swap(frame);
}

KvVideoView::SharedFrame KvVideoView::currentFrame() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_frame;
}

void KvVideoView::initializeGL() {
    initializeOpenGLFunctions();
    // A view that moves to another window may get a new context.
    disconnect(m_contextConnection);
    m_contextConnection =
        connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &KvVideoView::releaseGl);
    buildProgram();
    createTextures();
}

void KvVideoView::resizeGL(int, int) {}

void KvVideoView::paintGL() {
    const SharedFrame frame = currentFrame();
    const QRectF place = frame ? zoom().place(fitIn(*frame, size())) : QRectF(0, 0, 1, 1);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_scale = {std::min(1.0, place.width()), std::min(1.0, place.height())};
    }

    const qreal ratio = devicePixelRatioF();
    glViewport(0, 0, qRound(width() * ratio), qRound(height() * ratio));
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glUseProgram(m_program);
    if (frame) {
        uploadFrame(frame);
        followShrinking(*frame, place);
    }
    drawQuad(place, !frame);
    if (const GLenum error = glGetError())
        qDebug("glGetError() = %x", error);
    glFlush();
}

void KvVideoView::buildProgram() {
    const GLuint vertexShader = compileShader(GL_VERTEX_SHADER, kVertexShader);
    const GLuint fragmentShader = compileShader(GL_FRAGMENT_SHADER, kFragmentShader);
    m_program = glCreateProgram();
    glAttachShader(m_program, vertexShader);
    glAttachShader(m_program, fragmentShader);
    glLinkProgram(m_program);
    glDeleteShader(vertexShader);
    glDeleteShader(fragmentShader);
    GLint isLinked = GL_FALSE;
    glGetProgramiv(m_program, GL_LINK_STATUS, &isLinked);
    if (!isLinked)
        qCWarning(lcRender, "the picture's shader program does not link; pictures stay black");

    glUseProgram(m_program);
    glUniform1i(glGetUniformLocation(m_program, "textureY"), 0);
    glUniform1i(glGetUniformLocation(m_program, "textureU"), 1);
    glUniform1i(glGetUniformLocation(m_program, "textureV"), 2);
    m_vertexAttribute = glGetAttribLocation(m_program, "vertexIn");
    m_textureAttribute = glGetAttribLocation(m_program, "textureIn");
    m_matrixUniform = glGetUniformLocation(m_program, "colorConversionMatrix");
}

GLuint KvVideoView::compileShader(GLenum type, const char* source) {
    const bool needsPrecision = type == GL_FRAGMENT_SHADER && context()->isOpenGLES();
    const char* sources[] = {needsPrecision ? kEmbeddedPrecision : "", source};
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 2, sources, nullptr);
    glCompileShader(shader);
    return shader;
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
    glDeleteProgram(m_program);
    doneCurrent();
    disconnect(m_contextConnection);
    m_textures = {};
    m_program = 0;
    m_uploadedFrame.reset();
    m_usesMipmaps = m_hasMipmaps = false;
}

void KvVideoView::uploadFrame(const SharedFrame& frame) {
    const bool isSameSize = m_uploadedFrame && m_uploadedFrame->width() == frame->width() &&
                            m_uploadedFrame->height() == frame->height();
    const bool isUploaded = m_uploadedFrame == frame;
    const int halfWidth = frame->width() / 2;
    const int halfHeight = frame->height() / 2;
    for (int unit = 2; unit >= 0; --unit) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        glBindTexture(GL_TEXTURE_2D, m_textures[static_cast<size_t>(unit)]);
    }
    if (isUploaded)
        return;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    uploadPlane(0, frame->width(), frame->height(), frame->y(), isSameSize);
    uploadPlane(1, halfWidth, halfHeight, frame->u(), isSameSize);
    uploadPlane(2, halfWidth, halfHeight, frame->v(), isSameSize);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glActiveTexture(GL_TEXTURE0);
    m_uploadedFrame = frame;
    m_hasMipmaps = false;
}

/// A picture drawn much smaller than it is takes every pixel's share, so that fine structures do
/// not shimmer; the filter of two by two pixels alone would skip some.
void KvVideoView::followShrinking(const KvYUV420P& frame, const QRectF& place) {
    const bool isShrunk =
        place.width() * width() * devicePixelRatioF() < kMipmapShare * frame.width() &&
        hasOpenGLFeature(QOpenGLFunctions::NPOTTextures);
    if (isShrunk == m_usesMipmaps && (!isShrunk || m_hasMipmaps))
        return;
    for (const GLuint texture : m_textures) {
        glBindTexture(GL_TEXTURE_2D, texture);
        if (isShrunk && !m_hasMipmaps)
            glGenerateMipmap(GL_TEXTURE_2D);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                        isShrunk ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
    }
    glBindTexture(GL_TEXTURE_2D, m_textures[0]);
    m_usesMipmaps = isShrunk;
    m_hasMipmaps = isShrunk;
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

void KvVideoView::drawQuad(const QRectF& place, bool isBlack) {
    if (m_vertexAttribute < 0 || m_textureAttribute < 0)
        return;
    const std::array<float, 8> corners = orvelle::pictureCorners(place);
    const GLuint vertex = static_cast<GLuint>(m_vertexAttribute);
    const GLuint texture = static_cast<GLuint>(m_textureAttribute);
    glEnableVertexAttribArray(vertex);
    glVertexAttribPointer(vertex, 2, GL_FLOAT, GL_FALSE, 0, corners.data());
    glEnableVertexAttribArray(texture);
    glVertexAttribPointer(texture, 2, GL_FLOAT, GL_FALSE, 0, kTextureCorners);
    glUniformMatrix3fv(m_matrixUniform, 1, GL_FALSE, isBlack ? kBlackMatrix : kColorMatrix);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glDisableVertexAttribArray(texture);
    glDisableVertexAttribArray(vertex);
}
